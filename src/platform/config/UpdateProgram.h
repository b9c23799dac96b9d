#pragma once

#include <juce_core/juce_core.h>

namespace Platform
{

/** Where a medium may hold the update program, in the order in which it is looked for. */
juce::StringArray updateProgramPaths();

} // namespace Platform
