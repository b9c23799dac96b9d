#pragma once

#include "platform/marine/Parcel.h"

#include <juce_core/juce_core.h>
#include <optional>

/** A software update that a display on the boat's network asks for. */
namespace EngineLayer
{

/**
    The arguments of the update program, if the bytes behind the head of a proprietary message ask for an update; else
    none. `address` and `transfer` are those of the head.
*/
std::optional<juce::String> updateArgumentsOf(std::int32_t pgn, int address, int transfer,
                                              const std::vector<std::uint8_t>& content);
/** The arguments for a data block that asks for an update. */
juce::String updateArguments();
/** The answer to such a data block. */
void writeUpdateReply(Platform::Parcel& parcel, bool started);

/** Starts the update program from the first medium that has it and lets it start. False when none does. */
bool startUpdateProgram(const juce::String& arguments);

} // namespace EngineLayer
