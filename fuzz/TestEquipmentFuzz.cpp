#include "bench/mcu/TestEquipment.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

using namespace Bench;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/** One line, whatever the message holds. */
void checkText(std::span<const std::uint8_t> message)
{
    const auto text = testMessageText(message);
    require(!text.empty());
    require(std::ranges::none_of(text, [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; }));
}

} // namespace

/** The input as a frame of the unit; as its message, framed, which must come back; and as what the equipment sends. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Copies of exactly the right length, so that a read past the end is seen.
    const Bytes input(data, data + size);
    if (const auto frame = parseUnitFrame(input))
    {
        require(frame->message.size() + TestEquipment::frameOverhead == size && frame->sequence == input[2]);
        require(std::equal(frame->message.begin(), frame->message.end(), input.begin() + 4));
        checkText(frame->message);
    }
    checkText(input);
    if (size > TestEquipment::longestContent)
        return 0;

    auto framed = equipmentFrame(7, input);
    require(framed.size() == size + TestEquipment::frameOverhead && !parseUnitFrame(framed));
    framed[0] = 0xAA;
    framed[1] = 0xEE;
    framed.back() = static_cast<std::uint8_t>(std::accumulate(framed.begin(), framed.end() - 1, 0u));
    const auto again = parseUnitFrame(framed);
    require(again.has_value() == !input.empty());
    require(!again || *again == UnitTestFrame { 7, input });
    return 0;
}
