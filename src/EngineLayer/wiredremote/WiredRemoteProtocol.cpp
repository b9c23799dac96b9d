#include "EngineLayer/wiredremote/WiredRemoteProtocol.h"

#include "EngineApi/KeyCodes.h"

#include <algorithm>
#include <iterator>

namespace EngineLayer::WiredRemoteProtocol
{

namespace
{

using namespace EngineApi;

enum Code : std::uint8_t {
    codePosition = 0xE0, ///< in the lower bits row * 16 + column; opens a text
    codeEndOfText = 0x00,
    codeCommand = 0x8A, ///< opens a command
    codeClear = 0x9A,
    codeStartBrightness = 0xB0, ///< these three have a level in the lower bits
    codeDimmerA = 0xC0,
    codeDimmerB = 0xD0
};

constexpr std::uint8_t replacement = '?';

bool isShown(juce::juce_wchar character)
{
    return character >= 0x20 && character <= 0x7E;
}

struct Key
{
    std::uint8_t byte;
    KeyCode key;
};

constexpr Key keys[] = {
    { 0xA1, KEY_PRE },
    { 0xA2, KEY_NEXT },
    { 0xA3, KEY_PLAYPAUSE },
    { 0xA4, KEY_RETURN },
    { 0xA5, KEY_FAVORITIES },
    { 0xA6, KEY_SOURCE },
    { 0xA7, KEY_ROTARY_ENTER },
    { 0xA8, KEY_PRE_LONGPRESS },
    { 0xA9, KEY_NEXT_LONGPRESS },
    { 0xAB, KEY_REMOTE_POWER_OFF },
    { 0xAC, KEY_AMS1 },
    { 0xAD, KEY_MENU },
    { 0xAE, KEY_ROTARY_PRE },
    { 0xAF, KEY_ROTARY_NEXT },
};

Bytes encodeLevel(Code code, int level)
{
    if (level < 0 || level > highestLevel)
        return {};
    return { codeCommand, static_cast<std::uint8_t>(code | level) };
}

} // namespace

Bytes encodeText(int row, int column, const juce::String& text)
{
    if (row < 0 || row >= rows || column < 0 || column >= columns)
        return {};
    Bytes bytes;
    bytes.reserve(columns + 2);
    bytes.push_back(static_cast<std::uint8_t>(codePosition | (row * columns + column)));
    auto at = text.getCharPointer();
    for (int count = 0; count < columns && !at.isEmpty(); ++count)
    {
        const auto character = at.getAndAdvance();
        bytes.push_back(isShown(character) ? static_cast<std::uint8_t>(character) : replacement);
    }
    bytes.push_back(codeEndOfText);
    return bytes;
}

Bytes encodeClearRow(int row)
{
    return encodeText(row, 0, juce::String::repeatedString(" ", columns));
}

Bytes encodeClearDisplay()
{
    return { codeCommand, codeClear };
}

Bytes encodeStartBrightness(int level)
{
    return encodeLevel(codeStartBrightness, level);
}

Bytes encodeDimmerA(int level)
{
    return encodeLevel(codeDimmerA, level);
}

Bytes encodeDimmerB(int level)
{
    return encodeLevel(codeDimmerB, level);
}

namespace
{

/** The cells of a text, the last one not included: row * 16 + column. */
struct Cells
{
    int begin;
    int end;

    int row() const { return begin / columns; }
};

std::optional<Cells> cellsOf(const Bytes& command)
{
    constexpr int framing = 2; // the position in front, the end of the text
    if (command.size() <= framing || command.front() < codePosition || command.back() != codeEndOfText)
        return std::nullopt;
    const int begin = command.front() & ~codePosition;
    return Cells { begin, begin + static_cast<int>(command.size()) - framing };
}

/** Of a command without its level; 0 for a text. */
int kindOf(const Bytes& command)
{
    if (command.size() != 2 || command.front() != codeCommand)
        return 0;
    return command.back() == codeClear ? codeClear : command.back() & ~highestLevel;
}

} // namespace

bool supersedes(const Bytes& newer, const Bytes& older)
{
    if (const int kind = kindOf(newer); kind != 0)
        return kind == kindOf(older) || (kind == codeClear && cellsOf(older).has_value());
    const auto covering = cellsOf(newer);
    const auto covered = cellsOf(older);
    return covering && covered && covering->row() == covered->row() && covering->begin <= covered->begin &&
           covering->end >= covered->end;
}

std::optional<juce::int32> decodeKey(const void* data, int length)
{
    if (data == nullptr || length != 1)
        return std::nullopt;
    const auto byte = *static_cast<const std::uint8_t*>(data);
    const auto* found =
        std::find_if(std::begin(keys), std::end(keys), [byte](const Key& key) { return key.byte == byte; });
    if (found == std::end(keys))
        return std::nullopt;
    return found->key;
}

} // namespace EngineLayer::WiredRemoteProtocol
