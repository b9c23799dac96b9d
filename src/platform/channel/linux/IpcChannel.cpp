#include "platform/channel/linux/IpcChannel.h"

#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/base/Threads.h"
#include "platform/config/Configuration.h"
#include "platform/record/Recorder.h"
#include "platform/screen/Window.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>

namespace Platform
{

namespace
{

Platform::Counter messagesOverflowed {
    "channel.messages-overflowed",
    "messages to a program that takes none, or window messages, that others took the place of"
};

Platform::Counter messagesUnsent { "channel.messages-unsent", "messages that the bus did not take" };

using namespace std::chrono_literals;

constexpr Log logger { "platform/linux/IpcChannel", "MsgSession" };

constexpr std::chrono::milliseconds firstPause = 100ms;
constexpr std::chrono::milliseconds longestPause = 5000ms;
constexpr auto openLimit = 2s;
constexpr auto closeLimit = 200ms;
/** Bus messages between two deliveries: the bus keeps the rest, and what floods the engine fills no memory of it. */
constexpr int messagesPerPass = 64;
/** The most that the bus leaves lying before what comes on top waits, for a program, or is refused, for all. */
constexpr std::uint64_t maxUnsent = 2048;
/** How soon a busy receiver is looked at again. */
constexpr int busyPauseMs = 5;

} // namespace

/** Never destroyed: senders may be running until the process ends. */
IpcChannel& IpcChannel::get()
{
    static IpcChannel& channel = *new IpcChannel;
    return channel;
}

IpcChannel::IpcChannel()
    : wakeDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    windowMessages.countLossesIn(messagesOverflowed);
    for (auto& waiting : outgoing)
        waiting.countLossesIn(messagesOverflowed);
}

void IpcChannel::config(int selfIndex, IpcLink::NameOf nameOf)
{
    const std::lock_guard guard(lock);
    self = selfIndex;
    resolver = nameOf;
}

bool IpcChannel::claim()
{
    const std::lock_guard guard(lock);
    return !std::exchange(claimed, true);
}

bool IpcChannel::open(IMsgProc& newReceiver)
{
    std::unique_lock guard(lock);
    receiver = &newReceiver;
    stopping = false;
    lossLogged = false;
    pause = firstPause;
    retryAt = {};
    firstAttempt.reset();
    thread = std::thread([this] { run(); });
    const int ownType = self;
    attemptFinished.wait_for(guard, openLimit, [this] { return firstAttempt.has_value(); });
    const bool succeeded = firstAttempt.value_or(false);
    guard.unlock();

    if (ownType == Pubhead::AppMain)
        startWindowMessages(resolver(ownType),
                            [this](std::int32_t message, std::int32_t wParam, std::int32_t lParam) {
                                fileWindowMessage({ message, wParam, lParam });
                            });
    return succeeded;
}

void IpcChannel::close()
{
    if (self == Pubhead::AppMain)
        stopWindowMessages();
    stopping = true;
    wake();
    if (thread.joinable())
        thread.join();
    const std::lock_guard guard(lock);
    link.reset();
    seats.reset();
    events.clear();
    windowMessages.clear();
    for (auto& waiting : outgoing)
        waiting.clear();
    receiver = nullptr;
    claimed = false;
}

void IpcChannel::run()
{
    enterThread("ipc");
    while (!stopping)
    {
        tendLink();
        deliver();
        waitForTraffic();
    }
    sendRest();
}

void IpcChannel::tendLink()
{
    const std::lock_guard guard(lock);
    if (link == nullptr && Clock::now() >= retryAt)
        connect();
    if (link == nullptr)
        return;
    if (const int result = link->process(messagesPerPass); result < 0)
        loseLink("the message bus is gone", -result);
    else if (link->isSettled())
    {
        sendWaiting();
        pause = firstPause;
        lossLogged = false;
        finishAttempt(link->ownsName());
    }
}

void IpcChannel::connect()
{
    const auto address = IpcLink::busAddress();
    link = std::make_unique<IpcLink>(self, resolver, seats, events);
    if (const int result = address.empty() ? -ENOENT : link->start(address); result < 0)
        loseLink(("no message bus at \"" + address + "\"").c_str(), -result);
}

void IpcChannel::loseLink(const char* what, int error)
{
    link.reset();
    seats.clearOwners();
    // The next bus gives its connections the same names.
    for (auto& waiting : outgoing)
        waiting.clear();
    retryAt = Clock::now() + pause;
    pause = std::min(pause * 2, longestPause);
    if (!std::exchange(lossLogged, true))
        logger().error("%s: %s; trying again", what, std::strerror(error));
    finishAttempt(false);
}

void IpcChannel::finishAttempt(bool succeeded)
{
    if (firstAttempt.has_value())
        return;
    firstAttempt = succeeded;
    attemptFinished.notify_all();
}

void IpcChannel::deliver()
{
    std::deque<IpcEvent> batch;
    {
        const std::lock_guard guard(lock);
        if (mayDeliver())
            batch.swap(events);
    }
    for (auto& event : batch)
        if (!stopping)
            deliverOne(event);
    deliverWindowMessages();
}

void IpcChannel::deliverOne(IpcEvent& event)
{
    struct Visitor
    {
        IMsgProc& target;

        void operator()(RemoteMessage::Ptr& message) const
        {
            recordStep(Step::message, message->appType, message->what, message->arg1, message->arg2, message->bundle);
            target.onRemoteMessage(std::move(message));
        }
        void operator()(const IpcPresence& presence) const
        {
            recordStep(Step::presence, presence.appType, presence.present);
            target.onPresence(presence.appType, presence.present);
        }
        void operator()(const juce::String& text) const
        {
            recordStep(Step::broadcast, text);
            target.onBroadcast(text);
        }
    };
    std::visit(Visitor { *receiver }, event);
}

void IpcChannel::deliverWindowMessages()
{
    for (int handled = 0; handled < messagesPerPass && !stopping && !receiver->isBusy(); ++handled)
    {
        WindowMessage next {};
        {
            const std::lock_guard guard(lock);
            if (windowMessages.isEmpty())
                return;
            next = windowMessages.front();
            windowMessages.pop();
        }
        recordStep(Step::windowMessage, next.message, next.wParam, next.lParam);
        receiver->onWindowMessage(next.message, next.wParam, next.lParam);
    }
}

void IpcChannel::waitForTraffic()
{
    pollfd descriptors[] = { { wakeDescriptor, POLLIN, 0 }, { -1, 0, 0 } };
    int timeout = 0;
    {
        const std::lock_guard guard(lock);
        if (link != nullptr)
        {
            descriptors[1] = { link->getDescriptor(), link->getPollEvents(), 0 };
            timeout = link->getTimeout();
        }
        else
        {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(retryAt - Clock::now());
            timeout = static_cast<int>(std::clamp(left, std::chrono::milliseconds(0), longestPause).count());
        }
        if (!windowMessages.isEmpty())
        {
            const int due = receiver->isBusy() ? busyPauseMs : 0;
            timeout = timeout < 0 ? due : std::min(timeout, due);
        }
        if (!events.empty() && mayDeliver())
            timeout = 0;
    }
    poll(descriptors, std::size(descriptors), timeout);
    eventfd_t wakes = 0;
    eventfd_read(wakeDescriptor, &wakes);
}

/** What was posted before the end still leaves, as far as the bus takes it in time. */
void IpcChannel::sendRest()
{
    for (const auto end = Clock::now() + closeLimit; Clock::now() < end;)
    {
        pollfd descriptor { -1, POLLOUT, 0 };
        {
            const std::lock_guard guard(lock);
            if (link == nullptr || link->process(1) < 0)
                return;
            sendWaiting();
            if (link->getUnsent() == 0)
                return;
            descriptor.fd = link->getDescriptor();
        }
        constexpr int stepMs = 10;
        poll(&descriptor, 1, stepMs);
    }
}

void IpcChannel::fileWindowMessage(WindowMessage message)
{
    {
        const std::lock_guard guard(lock);
        if (windowMessages.push(message))
            logger().error("%d window messages wait: the oldest go", static_cast<int>(maxWindowMessages));
    }
    wake();
}

void IpcChannel::wake() const
{
    // A counter that is full wakes just as well.
    eventfd_write(wakeDescriptor, 1);
}

bool IpcChannel::hasRoom() const
{
    return link->getUnsent() < maxUnsent;
}

void IpcChannel::sendWaiting()
{
    for (int appType = 0; appType < IpcSeats::count; ++appType)
        for (auto& waiting = outgoing[static_cast<std::size_t>(appType)]; !waiting.isEmpty() && hasRoom();
             waiting.pop())
            // What waited for a process that has gone is not for the next one.
            if (const auto& next = waiting.front(); next.connection == seats.connectionOf(appType))
                send([&] { return link->post(next.connection, *next.message); });
}

template <typename Send>
bool IpcChannel::send(Send&& call)
{
    if (link == nullptr)
        return false;
    const int result = hasRoom() ? call() : -ENOBUFS;
    if (result < 0)
    {
        if (++refusedSends, ++messagesUnsent; std::has_single_bit(static_cast<unsigned>(refusedSends)))
            logger().error("message not sent: %s (%d so far)", std::strerror(-result), refusedSends);
        return false;
    }
    // What did not fit into the socket is written by the loop, which must learn of it.
    if ((link->getPollEvents() & POLLOUT) != 0)
        wake();
    return true;
}

bool IpcChannel::post(int appType, const RemoteMessage::Ptr& message)
{
    const std::lock_guard guard(lock);
    const auto connection = seats.connectionOf(appType);
    if (connection.empty())
        return false;
    auto& waiting = outgoing[static_cast<std::size_t>(appType)];
    if (waiting.isEmpty() && hasRoom())
        return send([&] { return link->post(connection, *message); });
    if (waiting.push({ connection, message }))
        logger().error("%d messages wait for %s: the oldest go", static_cast<int>(maxOutgoing),
                       Pubhead::appTypeName(appType));
    return true;
}

bool IpcChannel::broadcast(const RemoteMessage& message)
{
    const std::lock_guard guard(lock);
    return send([&] { return link->broadcast(message); });
}

bool IpcChannel::broadcastNamed(const juce::String& action, const Bundle::Ptr& bundle)
{
    const std::lock_guard guard(lock);
    return send([&] { return link->broadcast(action, bundle); });
}

bool IpcChannel::isPresent(int appType)
{
    const std::lock_guard guard(lock);
    return seats.isPresent(appType);
}

int IpcChannel::ownerProcess(int appType)
{
    const std::lock_guard guard(lock);
    return seats.processOf(appType);
}

void IpcChannel::expectProcess(int appType, int pid)
{
    {
        const std::lock_guard guard(lock);
        seats.expectProcess(appType, pid);
    }
    wake();
}

} // namespace Platform
