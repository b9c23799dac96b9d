#include "bench/buses/BusDevice.h"

#include <utility>

namespace Bench
{

BusDevice::BusDevice(Journal& journalToUse, PacketLine& lineToUse)
    : journal(journalToUse)
    , line(lineToUse)
{
    line.received = [this](int connection, Packet request) {
        take({ connection, Bytes(request.begin(), request.end()) });
    };
    line.closed = [this](int connection) { take({ connection, {} }); };
}

void BusDevice::take(Request request)
{
    if (waiting.empty())
        begun = now;
    waiting.push_back(std::move(request));
}

std::optional<Clock::time_point> BusDevice::due() const
{
    if (waiting.empty())
        return {};
    const auto& bytes = waiting.front().bytes;
    return bytes && canBeSlow(*bytes) ? begun + delay : begun;
}

void BusDevice::doDue()
{
    for (auto next = due(); next && *next <= now; next = due())
    {
        const auto [connection, bytes] = std::move(waiting.front());
        waiting.pop_front();
        begun = now;
        if (!bytes)
            closed(connection);
        else if (const auto reply = answer(connection, *bytes))
            line.send(connection, *reply);
        else
            line.drop(connection);
    }
}

} // namespace Bench
