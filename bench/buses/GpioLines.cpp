#include "bench/buses/GpioLines.h"

#include "bench/buses/WireValues.h"

namespace Bench
{

namespace
{

constexpr std::size_t requestSize = 12;
enum Operation : std::uint32_t { setFunction = 0, writeLevel = 1, readLevel = 2 };

Bytes replyOf(std::int32_t status, std::uint32_t value)
{
    Bytes reply;
    appendValue(reply, status);
    appendValue(reply, value);
    return reply;
}

} // namespace

void GpioLines::drive(std::uint32_t number, std::uint32_t level)
{
    table[number].level = level;
    journal.add("gpio " + std::to_string(number), std::to_string(level) + " from outside");
}

std::optional<Bytes> GpioLines::answer(int, Packet request)
{
    constexpr std::int32_t done = 0;
    constexpr std::int32_t refused = -1;
    if (request.size() != requestSize)
        return replyOf(refused, 0);
    const auto number = valueAt<std::uint32_t>(request, 0);
    const auto operation = valueAt<std::uint32_t>(request, 4);
    const auto value = valueAt<std::uint32_t>(request, 8);

    if (operation > readLevel || (!table.contains(number) && table.size() >= maxLines))
        return replyOf(refused, 0);
    auto& [function, level, writes] = table[number];
    if (operation == setFunction)
        function = value;
    if (operation == writeLevel)
    {
        level = value;
        ++writes;
        journal.add("gpio " + std::to_string(number), std::to_string(value));
    }
    return replyOf(done, operation == readLevel ? level : value);
}

} // namespace Bench
