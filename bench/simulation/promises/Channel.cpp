#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "EngineLayer/channel/RemoteSessionManager.h"
#include "bench/simulation/Promises.h"
#include "bench/text/Names.h"
#include "kernel/MessageIds.h"
#include "platform/channel/RemoteMessageIds.h"

#include <array>
#include <deque>
#include <map>

namespace Simulation
{

namespace
{

using Platform::IpcDouble::Posted;

/** What components of the engine take from the channel themselves, before it comes to the pages. */
constexpr std::array toComponents { Platform::RMSG_PAGE_REQUEST_SHOW, Platform::RMSG_PAGE_SHOW_READY,
                                    Platform::RMSG_PAGE_HIDE_READY,   Platform::RMSG_PAGE_TOP_SHOWN,
                                    Platform::RMSG_APP_HELLO,         Platform::RMSG_HEARTBEAT_REPLY };

bool isForComponent(int what)
{
    return std::ranges::find(toComponents, what) != toComponents.end();
}

/** The executable monitor posts these past the queue. */
bool goesPastTheQueue(const Posted& message)
{
    constexpr int toAll = -1;
    return message.appType == toAll || message.what == Platform::RMSG_APP_HELLO_ACK ||
           (message.what == Platform::RMSG_SOURCE_STOP && message.arg1 == 0);
}

/** What travels between the engine and its programs, as the channel and the components see it. */
class Channel
{
public:
    void watch(SimulatedUnit& unit)
    {
        unit.lookout.posted.add([this](const Posted& message) { posted += goesPastTheQueue(message) ? 0 : 1; });
        unit.lookout.spoken.add([this](int appType, const Posted& message) { onSpoken(appType, message); });
        unit.lookout.messages.add([this](Kernel::SystemTask&, const Kernel::SystemMessage& message)
                                  { onHandled(message); });
    }

    std::string wrong() const { return broken; }

    std::string unheard() const
    {
        for (const auto& [appType, messages] : spoken)
            if (!messages.empty())
                return "nobody has handled message " + std::to_string(messages.front().what) + " of " +
                       Pubhead::appTypeName(appType);
        return {};
    }

    std::string lost() const
    {
        const auto counts = EngineLayer::RemoteSessionManager::getInstance()->getCounts();
        if (counts.accepted != counts.posted + counts.dropped + counts.waiting)
            return "of " + std::to_string(counts.accepted) + " messages " + std::to_string(counts.posted) +
                   " were posted, " + std::to_string(counts.dropped) + " dropped, and " +
                   std::to_string(counts.waiting) + " wait";
        if (counts.posted != posted)
            return std::to_string(counts.posted) + " messages were posted, " + std::to_string(posted) +
                   " came to the channel";
        return {};
    }

private:
    std::uint64_t posted = 0;
    std::map<int, std::deque<Posted>> spoken; ///< and not handled yet, by program
    std::string broken;

    void onSpoken(int appType, const Posted& message)
    {
        if (!isForComponent(message.what) && EngineApi::getHandler(EngineApi::getPageOfAppType(appType)) != nullptr)
            spoken[appType].push_back(message);
    }

    void onHandled(const Kernel::SystemMessage& message)
    {
        const auto* remote = message.id == Kernel::MSG_APP_REMOTE
                                 ? Kernel::payloadAs<Platform::RemoteMessage>(message.payload)
                                 : nullptr;
        // Messages to the engine's window come by another way, and a page ignores what comes before its component listens.
        if (remote == nullptr || typeid(*remote) != typeid(Platform::RemoteMessage) || isForComponent(remote->what))
            return;
        auto& expected = spoken[remote->appType];
        const auto isIt = [&](const Posted& each)
        { return each.what == remote->what && each.arg1 == remote->arg1 && each.arg2 == remote->arg2; };
        if (!expected.empty() && isIt(expected.front()))
            return expected.pop_front();
        if (broken.empty())
            broken = std::string(Pubhead::appTypeName(remote->appType)) + " is heard to say " +
                     std::to_string(remote->what) + ", " +
                     (expected.empty() ? "but has nothing to say" : "before " + std::to_string(expected.front().what));
    }
};

std::string inOrder(SimulatedUnit&, const Since&)
{
    return only<Channel>().wrong();
}

std::string allHeard(SimulatedUnit&, const Since&)
{
    return only<Channel>().unheard();
}

std::string allDelivered(SimulatedUnit&, const Since&)
{
    return only<Channel>().lost();
}

constexpr Promise all[] {
    { "what a program says is heard in order", inOrder, false, watchWith<Channel> },
    { "what a program says is heard", allHeard, true },
    { "what is said to a program reaches it or is counted", allDelivered, true },
};

} // namespace

std::span<const Promise> channelPromises()
{
    return all;
}

} // namespace Simulation
