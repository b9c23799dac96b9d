#pragma once

/** Items of the system-information table that the engine writes or reads, by what they stand for. */
namespace Platform
{

enum SysInfoItem : int {
    sysInfoBluetooth = 0,       ///< 1 while the module is on
    sysInfoBluetoothValue1 = 1, ///< 1 and 2: passed on from the program
    sysInfoBluetoothValue2 = 2,
    sysInfoiPodDriver = 7,
    sysInfoiPodAuthentication = 21,
    sysInfoiPodLink = 22,
    sysInfoPairedList = 31,
    sysInfoPandoraSource = 32,
    sysInfoSppLink = 34,      ///< 0 none, 1, 2 open
    sysInfoPandoraLink = 35,  ///< 0 none, 2 up
    sysInfoVoltageShown = 36, ///< setting 22
    sysInfoVoltage = 37,      ///< raw, of the microcontroller
    sysInfoLowBattery = 38
};

} // namespace Platform
