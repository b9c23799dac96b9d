#pragma once

#include "platform/marine/Parcel.h"

#include <juce_core/juce_core.h>
#include <optional>

/** A software update that a display on the boat's network asks for. */
namespace EngineLayer
{

/**
    What follows the head of a proprietary message says that an update is wanted: the arguments of the update program,
    else empty. `address` and `transfer` are the head's.
*/
std::optional<juce::String> updateArgumentsOf(std::int32_t pgn, int address, int transfer,
                                              const std::vector<std::uint8_t>& content);
/** Of a data block that asks for an update. */
juce::String updateArguments();
/** The answer to it. */
void writeUpdateReply(Platform::Parcel& parcel, bool started);

/** Starts the update program from the first medium that has it and lets it start. False when none does. */
bool startUpdateProgram(const juce::String& arguments);

} // namespace EngineLayer
