#include "EngineLayer/wiredremote/WiredRemoteProtocol.h"
#include "platform/base/Utf8.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

using namespace EngineLayer::WiredRemoteProtocol;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/** What the remote would see is one text at its position, whatever the text was. */
void checkText(int row, int column, const Bytes& encoded)
{
    const bool onDisplay = row >= 0 && row < rows && column >= 0 && column < columns;
    require(encoded.empty() != onDisplay);
    if (!onDisplay)
        return;
    require(encoded.size() >= 2 && encoded.size() <= columns + 2);
    require(encoded.front() == 0xE0 + row * columns + column && encoded.back() == 0);
    require(std::all_of(encoded.begin() + 1, encoded.end() - 1, [](int byte) { return byte >= 0x20 && byte <= 0x7E; }));
}

void checkLevel(int level, const Bytes& encoded)
{
    require(encoded.size() == (level >= 0 && level <= highestLevel ? 2u : 0u));
}

} // namespace

/** First two bytes: row and column, signed. The rest is a text, and a read from the remote. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const int row = static_cast<std::int8_t>(data[0]);
    const int column = static_cast<std::int8_t>(data[1]);
    const auto* bytes = data + 2;
    const auto length = static_cast<int>(size - 2);

    const std::string_view text(reinterpret_cast<const char*>(bytes), size - 2);
    checkText(row, column, encodeText(row, column, Platform::textOfUtf8(text)));
    checkText(row, 0, encodeClearRow(row));
    checkLevel(column, encodeStartBrightness(column));
    checkLevel(column, encodeDimmerA(column));
    checkLevel(column, encodeDimmerB(column));

    const auto key = decodeKey(bytes, length);
    require(!key || (length == 1 && bytes[0] >= 0xA1 && bytes[0] <= 0xAF && bytes[0] != 0xAA));
    return 0;
}
