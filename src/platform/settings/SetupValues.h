#pragma once

#include <juce_core/juce_core.h>
#include <map>
#include <optional>
#include <string>

/** The form in which the settings store keeps a value: a type byte, then 4 bytes, low byte first, or UTF-8 text. */
namespace Platform
{

/** Encoded settings by index. */
using SetupValues = std::map<int, std::string>;

inline constexpr std::size_t longestSetupText = 64 * 1024; ///< in bytes

std::string encodeSetup(juce::int32 value);
std::string encodeSetup(const std::string& text);
/** None when the bytes are of the other type, or damaged. */
std::optional<juce::int32> decodeSetupInt(const std::string& value);
std::optional<juce::String> decodeSetupText(const std::string& value);

/**
    The factory values of the resource folder, or none and a log line when the file is missing or malformed. Single bad
    lines are logged and left out.
*/
SetupValues readFactoryValues();

} // namespace Platform
