#include "platform/channel/linux/IpcSeats.h"

#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/base/Process.h"

#include <algorithm>
#include <bit>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/linux/IpcSeats", "MsgSession" };

Platform::Counter messagesOfStrangers {
    "channel.messages-of-strangers", "messages of connections that are no program, or not the one that was started"
};

} // namespace

void IpcSeats::setOwner(int appType, const std::string& connection)
{
    if (!isSeat(appType))
        return;
    auto& seat = seats[static_cast<std::size_t>(appType)];
    if (seat.connection == connection)
        return;
    seat.connection.clear();
    evaluate(appType);
    seat.connection = connection;
    seat.process = -1;
    seat.processKnown = false;
    evaluate(appType);
}

void IpcSeats::setProcess(int appType, const std::string& connection, int pid)
{
    if (!isSeat(appType))
        return;
    auto& seat = seats[static_cast<std::size_t>(appType)];
    if (seat.connection != connection)
        return;
    seat.process = pid;
    seat.processKnown = true;
    evaluate(appType);
}

void IpcSeats::expectProcess(int appType, int pid)
{
    if (!isSeat(appType))
        return;
    seats[static_cast<std::size_t>(appType)].expected = pid;
    evaluate(appType);
}

void IpcSeats::clearOwners()
{
    for (int appType = 0; appType < count; ++appType)
        setOwner(appType, {});
}

void IpcSeats::reset()
{
    clearOwners();
    dropped = 0;
    for (auto& seat : seats)
        seat.expected = -1;
}

void IpcSeats::evaluate(int appType)
{
    auto& seat = seats[static_cast<std::size_t>(appType)];
    const auto before = seat.standing;
    if (seat.connection.empty())
        seat.standing = Standing::absent;
    else if (!seat.processKnown)
        seat.standing = Standing::checking;
    else if (seat.expected < 0 || (seat.process >= 0 && isSameOrDescendant(seat.process, seat.expected)))
        seat.standing = Standing::present;
    else
        seat.standing = Standing::refused;
    if (seat.standing == before)
        return;

    if (before == Standing::present)
        events.emplace_back(IpcPresence { appType, false });
    if (seat.standing == Standing::refused)
        logger().error("%s is owned by process %d, which is not the started process %d: refused",
                       Pubhead::appTypeName(appType), seat.process, seat.expected);
    if (seat.standing == Standing::present)
        events.emplace_back(IpcPresence { appType, true });
    if (seat.standing == Standing::checking)
        return;
    for (auto& message : std::exchange(seat.held, {}))
    {
        if (seat.standing == Standing::present)
            events.emplace_back(std::move(message));
        else
            drop(seat.connection.c_str(), "its owner was refused or is gone");
    }
}

bool IpcSeats::isPresent(int appType) const
{
    return isSeat(appType) && seats[static_cast<std::size_t>(appType)].standing == Standing::present;
}

bool IpcSeats::isChecking() const
{
    return std::any_of(seats.begin(), seats.end(),
                       [](const Seat& seat) { return seat.standing == Standing::checking; });
}

std::string IpcSeats::connectionOf(int appType) const
{
    return isPresent(appType) ? seats[static_cast<std::size_t>(appType)].connection : std::string();
}

int IpcSeats::processOf(int appType) const
{
    return isPresent(appType) ? seats[static_cast<std::size_t>(appType)].process : -1;
}

int IpcSeats::typeOf(const char* connection) const
{
    const auto owned = [&](const Seat& seat) { return seat.connection == connection; };
    // A connection with several names speaks for the first of them that it may speak for.
    auto found = std::find_if(seats.begin(), seats.end(),
                              [&](const Seat& seat) { return owned(seat) && seat.standing == Standing::present; });
    if (found == seats.end())
        found = std::find_if(seats.begin(), seats.end(), owned);
    return found == seats.end() ? -1 : static_cast<int>(found - seats.begin());
}

void IpcSeats::received(const char* connection, RemoteMessage::Ptr message)
{
    const int appType = connection == nullptr ? -1 : typeOf(connection);
    if (appType < 0)
    {
        drop(connection, "it owns no program's name");
        return;
    }
    auto& seat = seats[static_cast<std::size_t>(appType)];
    message->appType = appType;
    if (seat.standing == Standing::present)
        events.emplace_back(std::move(message));
    else if (seat.standing == Standing::checking && seat.held.size() < maxHeld)
        seat.held.push_back(std::move(message));
    else
        drop(connection, seat.standing == Standing::checking ? "too many wait" : "its owner is refused");
}

bool IpcSeats::mayAct(const char* connection)
{
    const bool may = connection != nullptr && isPresent(typeOf(connection));
    if (!may)
        drop(connection, "it is no present program's");
    return may;
}

void IpcSeats::drop(const char* connection, const char* reason)
{
    ++dropped;
    ++messagesOfStrangers;
    // Each doubling is enough to see that it goes on, without letting a stranger fill the log.
    if (std::has_single_bit(static_cast<unsigned>(dropped)))
        logger().error("message of connection %s dropped, %s (%d dropped so far)",
                       connection == nullptr ? "" : connection, reason, dropped);
}

} // namespace Platform
