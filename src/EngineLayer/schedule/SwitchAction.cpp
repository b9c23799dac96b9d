#include "EngineLayer/schedule/SwitchAction.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

bool goesFirst(const EngineApi::AppStateSwitch& order)
{
    return order.switchType == EngineApi::SwitchType::ToStop || order.switchType == EngineApi::SwitchType::ToChange;
}

} // namespace

SwitchAction::Orders SwitchAction::sendNext()
{
    Orders now;
    auto take = [&](auto wanted)
    {
        for (const auto& order : orders)
        {
            if (order->progress != EngineApi::OrderProgress::notSent || !wanted(*order))
                continue;
            order->progress = EngineApi::OrderProgress::sent;
            now.push_back(order);
        }
    };
    take(goesFirst);
    if (now.empty())
        take([](const EngineApi::AppStateSwitch&) { return true; });
    return now;
}

void SwitchAction::markPage(int page, bool ok)
{
    auto finish = [ok](auto& order)
    {
        if (order.progress != EngineApi::OrderProgress::sent)
            return;
        order.progress = EngineApi::OrderProgress::finished;
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
    auto sent = [](const auto& order) { return order->progress != EngineApi::OrderProgress::notSent; };
    return std::ranges::all_of(orders, sent) && (resourceSwitch == nullptr || sent(resourceSwitch));
}

bool SwitchAction::allFinished() const
{
    auto finished = [](const auto& order) { return order->progress == EngineApi::OrderProgress::finished; };
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
        if (order->progress != EngineApi::OrderProgress::notSent)
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
            " | Action: ", EngineApi::switchTypeName(static_cast<int>(order->switchType)));
        add("SC: ", order->states.showState, " | SP: ", order->states.playState, " | AC: ", order->states.audioState,
            " | VC: ", order->states.videoState);
    }
    if (resourceSwitch != nullptr)
    {
        const auto& resource = *resourceSwitch;
        add("FAC: ", Dsp::audioChannelName(resource.frontAudioChannel),
            " | FVC: ", EngineApi::videoChannelName(resource.frontVideoChannel));
        add("RAC: ", Dsp::audioChannelName(resource.rearAudioChannel),
            " | RVC: ", EngineApi::videoChannelName(resource.rearVideoChannel));
        add("SRC: ", EngineApi::sourceName(resource.source));
        add("Mix: ", resource.mix ? 1 : 0);
        add("Trigger: ", resource.trigger ? 1 : 0);
    }
    return lines;
}

} // namespace EngineLayer
