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
    sysInfoVoltageShown = 36, ///< voltmeterSetting
    sysInfoVoltage = 37,      ///< 0 to 255, as the microcontroller reports it
    sysInfoLowBattery = 38
};

/** Of the reported voltage. */
inline constexpr double voltsPerStep = 25.3 / 256;

} // namespace Platform
