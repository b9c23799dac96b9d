#pragma once

namespace EngineLayer
{

/** True when a USB storage is mounted. The SD card takes the first mount point's place where the unit is set up so. */
bool isUsbStoragePresent();

} // namespace EngineLayer
