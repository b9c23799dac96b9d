#pragma once

#include "kernel/DeviceWorker.h"

namespace EngineLayer
{

/**
    Drives the two lines that are high while the unit is on; they also supply the Bluetooth module and the USB hub.
    Returns at once. Any thread.
*/
void driveOutputs(bool on);
/** Switches both off, and on again after `offMs`. */
void pulseOutputs(int offMs);

/** The jobs of the thread "Devices", which it does in the order of the calls. */
enum class DeviceJob { outputs, decoderSetUp, cameraPoll };
/** Any thread. */
void postDeviceJob(DeviceJob what, Kernel::DeviceWorker::Job job);

} // namespace EngineLayer
