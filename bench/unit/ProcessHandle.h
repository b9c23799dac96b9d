#pragma once

#include "platform/base/Descriptor.h"
#include "platform/channel/linux/IpcSdBus.h"

#include <chrono>
#include <string>

namespace Bench
{

/** The process that owns this name or connection on the bus; -1 for none. Asks the bus, and waits for its answer. */
int processOf(sd_bus* bus, const std::string& name);

/** Of a process, readable when that has ended; none when it is gone already. */
Platform::Descriptor openProcess(int pid);

bool isReadable(int descriptor, std::chrono::milliseconds wait = std::chrono::milliseconds(0));

} // namespace Bench
