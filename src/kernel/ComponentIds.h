#pragma once

#include <juce_core/juce_core.h>

namespace Kernel
{

/** The address of a component. Numbers that are missing belong to no component; a message to them is dropped. */
using ComponentId = juce::int32;

enum : ComponentId {
    noComponent = 0,
    mainMenuApplicationId = 1,
    setupApplicationId = 2,
    bluetoothApplicationId = 3,
    radioApplicationId = 5,
    usbApplicationId = 7,
    iPodApplicationId = 9,
    siriusApplicationId = 10,
    auxInApplicationId = 11,
    generalApplicationId = 16,
    systemStateManagerId = 17,
    hostSessionManagerId = 19,
    remoteSessionManagerId = 20,
    deviceStatusManagerId = 21,
    keyManagerId = 23,
    dataManagerId = 24,
    hostcommDevId = 25,
    monitorSendThreadId = 26,
    viewManagerId = 27,
    exeMonitorId = 28,
    navicoManagerId = 30,
    wiredRemoteId = 31
};

/** Every id is below. */
inline constexpr ComponentId componentIdLimit = 64;

} // namespace Kernel
