#pragma once

#include "kernel/ComponentIds.h"

/** What the log, the diagnostics and a trace call the engine's parts. Any thread. */
namespace Kernel
{

/** "component 12" where there is none. */
juce::String componentName(ComponentId id);
/** Of a system-wide message; one that is private to its receiver is "message 4". */
juce::String messageName(juce::int32 id);

} // namespace Kernel
