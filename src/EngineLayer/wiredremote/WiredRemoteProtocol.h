#pragma once

#include <cstdint>
#include <juce_core/juce_core.h>
#include <optional>
#include <vector>

/** The bytes that the wired remote and the unit exchange. Values in, values out. */
namespace EngineLayer::WiredRemoteProtocol
{

using Bytes = std::vector<std::uint8_t>;

inline constexpr int baudRate = 57600;
inline constexpr int rows = 2;
inline constexpr int columns = 16;
inline constexpr int highestLevel = 15; ///< of the dimmers

/**
    0xE0 | position, the text, 0. At most 16 characters; a character that the display does not have (it has ASCII 0x20
    to 0x7E) is sent as '?'. Empty when row or column is outside of the display.
*/
Bytes encodeText(int row, int column, const juce::String& text);
/** Row 0 or 1 filled with blanks; empty for another. */
Bytes encodeClearRow(int row);
Bytes encodeClearDisplay();
/** Levels 0 to 15; empty outside. */
Bytes encodeStartBrightness(int level);
Bytes encodeDimmerA(int level);
Bytes encodeDimmerB(int level);

/**
    True when the remote stands as after both commands although only the newer one is sent: a text covers the older one
    in its row, a cleared display everything, a level the one before.
*/
bool supersedes(const Bytes& newer, const Bytes& older);

/** The key (EngineApi::KeyCode) of one read; none for another length than 1 and for bytes that mean no key. */
std::optional<juce::int32> decodeKey(const void* data, int length);

} // namespace EngineLayer::WiredRemoteProtocol
