#include "EngineLayer/schedule/SwitchAction.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

bool goesFirst(const AppStateSwitch& order)
{
    return order.switchType == SwitchType::ToStop || order.switchType == SwitchType::ToChange;
}

} // namespace

SwitchAction::Orders SwitchAction::sendNext()
{
    Orders now;
    auto take = [&](auto wanted)
    {
        for (const auto& order : orders)
        {
            if (order->progress != OrderProgress::notSent || !wanted(*order))
                continue;
            order->progress = OrderProgress::sent;
            now.push_back(order);
        }
    };
    take(goesFirst);
    if (now.empty())
        take([](const AppStateSwitch&) { return true; });
    return now;
}

void SwitchAction::markPage(int page, bool ok)
{
    auto finish = [ok](auto& order)
    {
        if (order.progress != OrderProgress::sent)
            return;
        order.progress = OrderProgress::finished;
        order.succeeded = ok;
    };
    if (page == Pubhead::NUM_OF_PAGES)
    {
        if (resourceSwitch != nullptr)
            finish(*resourceSwitch);
        return;
    }
    for (const auto& order : orders)
        if (order->page == page)
            finish(*order);
}

bool SwitchAction::allSent() const
{
    auto sent = [](const auto& order) { return order->progress != OrderProgress::notSent; };
    return std::ranges::all_of(orders, sent) && (resourceSwitch == nullptr || sent(resourceSwitch));
}

bool SwitchAction::allFinished() const
{
    auto finished = [](const auto& order) { return order->progress == OrderProgress::finished; };
    return std::ranges::all_of(orders, finished) && (resourceSwitch == nullptr || finished(resourceSwitch));
}

bool SwitchAction::allSucceeded() const
{
    auto succeeded = [](const auto& order) { return order->succeeded; };
    return std::ranges::all_of(orders, succeeded) && (resourceSwitch == nullptr || succeeded(resourceSwitch));
}

std::vector<int> SwitchAction::sentPages() const
{
    std::vector<int> pages;
    for (const auto& order : orders)
        if (order->progress != OrderProgress::notSent)
            pages.push_back(order->page);
    return pages;
}

std::vector<juce::String> SwitchAction::describe() const
{
    std::vector<juce::String> lines { "++++++++++++ | Schedule SwitchAction" };
    auto add = [&](auto&&... parts) { (lines.emplace_back() << ... << parts); };
    for (const auto& order : orders)
    {
        add("APP: ", Pubhead::pageName(order->page),
            " | Action: ", switchTypeName(static_cast<int>(order->switchType)));
        add("SC: ", order->states.showState, " | SP: ", order->states.playState, " | AC: ", order->states.audioState,
            " | VC: ", order->states.videoState);
    }
    if (resourceSwitch != nullptr)
    {
        const auto& resource = *resourceSwitch;
        add("FAC: ", audioChannelName(resource.frontAudioChannel),
            " | FVC: ", videoChannelName(resource.frontVideoChannel));
        add("RAC: ", audioChannelName(resource.rearAudioChannel),
            " | RVC: ", videoChannelName(resource.rearVideoChannel));
        add("SRC: ", sourceName(resource.source));
        add("Mix: ", resource.mix ? 1 : 0);
        add("Trigger: ", resource.trigger ? 1 : 0);
    }
    return lines;
}

} // namespace EngineLayer
