#include "bench/buses/GpioLines.h"

#include "bench/network/WireValues.h"

namespace Bench
{

namespace
{

constexpr std::size_t requestSize = 12;
enum Operation : std::uint32_t { setFunction = 0, writeLevel = 1, readLevel = 2 };

std::vector<std::uint8_t> replyOf(std::int32_t status, std::uint32_t value)
{
    std::vector<std::uint8_t> reply;
    appendValue(reply, status);
    appendValue(reply, value);
    return reply;
}

} // namespace

GpioLines::GpioLines(Journal& journalToUse)
    : journal(journalToUse)
{
}

std::string GpioLines::start(const std::string& path)
{
    return server.listen(path, { {},
                                 [this](int connection, PacketServer::Packet request)
                                 {
                                     slowness.wait();
                                     server.send(connection, answer(request));
                                 },
                                 {} });
}

void GpioLines::stop()
{
    slowBy(std::chrono::milliseconds(0));
    server.close();
}

std::vector<std::uint8_t> GpioLines::answer(PacketServer::Packet request)
{
    constexpr std::int32_t done = 0;
    constexpr std::int32_t refused = -1;
    if (request.size() != requestSize)
        return replyOf(refused, 0);
    const auto number = valueAt<std::uint32_t>(request, 0);
    const auto operation = valueAt<std::uint32_t>(request, 4);
    const auto value = valueAt<std::uint32_t>(request, 8);

    const std::scoped_lock guard(lock);
    if (operation > readLevel || (!table.contains(number) && table.size() >= maxLines))
        return replyOf(refused, 0);
    auto& line = table[number];
    if (operation == setFunction)
        line.function = value;
    if (operation == writeLevel)
    {
        line.level = value;
        ++line.writes;
        journal.add("gpio " + std::to_string(number), std::to_string(value));
    }
    return replyOf(done, operation == readLevel ? line.level : value);
}

std::map<std::uint32_t, GpioLines::Line> GpioLines::lines() const
{
    const std::scoped_lock guard(lock);
    return table;
}

void GpioLines::drive(std::uint32_t line, std::uint32_t level)
{
    const std::scoped_lock guard(lock);
    table[line].level = level;
}

} // namespace Bench
