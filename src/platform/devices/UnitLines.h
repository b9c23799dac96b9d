#pragma once

#include "kernel/DeviceWorker.h"

namespace EngineLayer
{

/** GPIO lines that the engine drives, by their unit numbers. */
enum class UnitLine : int {
    startOutput1 = 32856, ///< both are high while the unit is on
    startOutput2 = 32771,
    videoDecoderPower = 32772,
    remoteTransmit = 32768 ///< high while the unit writes to the wired remote's shared bus
};

/**
    Makes the line an output and drives it. A line that cannot be had is logged by the platform. It may take a second:
    only for the thread of a device.
*/
void drive(UnitLine line, bool high);

/** Both lines that are high while the unit is on; they supply the Bluetooth module and the USB hub, too. Returns at
 * once. Any thread. */
void driveOutputs(bool on);
/** The same off, and on again after that time. */
void pulseOutputs(int offMs);

/** What the thread "Devices" does, in the order of the calls. */
enum class DeviceJob { outputs, decoderSetUp, cameraPoll };
/** Any thread. */
void postDeviceJob(DeviceJob what, Kernel::DeviceWorker::Job job);

} // namespace EngineLayer
