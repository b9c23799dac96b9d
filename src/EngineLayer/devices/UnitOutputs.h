#pragma once

#include "kernel/DeviceWorker.h"

namespace EngineLayer
{

/**
    Both lines that are high while the unit is on; they supply the Bluetooth module and the USB hub, too. Returns at
    once. Any thread.
*/
void driveOutputs(bool on);
/** The same off, and on again after that time. */
void pulseOutputs(int offMs);

/** What the thread "Devices" does, in the order of the calls. */
enum class DeviceJob { outputs, decoderSetUp, cameraPoll };
/** Any thread. */
void postDeviceJob(DeviceJob what, Kernel::DeviceWorker::Job job);

} // namespace EngineLayer
