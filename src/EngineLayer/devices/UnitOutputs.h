#pragma once

#include "kernel/DeviceWorker.h"
#include "platform/devices/UnitLines.h"

namespace EngineLayer
{

/**
    Makes the line an output and drives it. A line that cannot be had is logged by the platform. It may take a second:
    only for the thread of a device.
*/
void drive(Platform::UnitLine line, bool high);

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
