#pragma once

#include "EngineLayer/schedule/Scheduler.h"

#include <algorithm>
#include <ostream>
#include <string>

namespace EngineLayer
{

/** One thing that happens to the unit: a request, a phone call, or the user switching Bluetooth. */
struct Step
{
    enum Kind { request, call, bluetooth };

    Kind kind = request;
    EngineApi::RequestInfo info {};
    bool on = false; ///< of a call and of Bluetooth
};

/** As the console of the bench takes it. */
inline std::ostream& operator<<(std::ostream& out, const Step& step)
{
    if (step.kind == Step::call)
        return out << "call " << (step.on ? "on" : "off");
    if (step.kind == Step::bluetooth)
        return out << "setting 7 " << step.on;
    constexpr const char* verbs[] { "none", "run", "play", "show", "hide", "stop" };
    out << "request " << Pubhead::pageName(step.info.page) << ' ' << verbs[static_cast<std::size_t>(step.info.action)];
    return step.info.autoSwitch ? out << " auto" : out;
}

/**
    The pages of a unit around a scheduler: it describes them as their handlers do, and carries every order out as the
    handlers do, each with success.
*/
class ScheduleUnit
{
public:
    struct Page
    {
        EngineApi::ScheduleInfo info;
        bool running = false;
    };

    ScheduleUnit()
    {
        for (int page = 0; page < Pubhead::NUM_OF_PAGES; ++page)
            if (const auto* config = EngineApi::pageScheduleConfig(page))
                add(*config);
    }

    void add(const EngineApi::PageScheduleConfig& config)
    {
        EngineApi::ScheduleInfo info;
        info.page = config.page;
        info.showLevel = config.showLevel;
        info.playLevel = config.playLevel;
        info.videoLevel = config.videoLevel;
        info.audioLevel = config.audioLevel;
        info.states = config.initialStates;
        info.isSourcePage = config.isSourcePage;
        info.isNormalSource = config.isNormalSource;
        info.isRear = config.isRear;
        pages[config.page].info = info;
    }

    ScheduleUnit& run(int page, bool autoSwitch = false)
    {
        return request({ page, EngineApi::AppAction::ToRun, autoSwitch });
    }
    ScheduleUnit& play(int page, bool autoSwitch = false)
    {
        return request({ page, EngineApi::AppAction::ToPlay, autoSwitch });
    }
    ScheduleUnit& show(int page, bool autoSwitch = false)
    {
        return request({ page, EngineApi::AppAction::ToShow, autoSwitch });
    }
    ScheduleUnit& hide(int page, bool autoSwitch = false)
    {
        return request({ page, EngineApi::AppAction::ToHide, autoSwitch });
    }
    ScheduleUnit& stop(int page, bool autoSwitch = false)
    {
        return request({ page, EngineApi::AppAction::ToStop, autoSwitch });
    }

    /** The phone competes for the sound only while its call condition holds. */
    ScheduleUnit& call(bool on)
    {
        calling = on;
        return *this;
    }

    /** Setting 7. */
    ScheduleUnit& bluetooth(bool on)
    {
        bluetoothSetting = on;
        return *this;
    }

    ScheduleUnit& apply(const Step& step)
    {
        if (step.kind == Step::call)
            return call(step.on);
        return step.kind == Step::bluetooth ? bluetooth(step.on) : request(step.info);
    }

    /** As the state manager does: a stop of what does not run is refused; else scheduled and carried out to its end. */
    ScheduleUnit& request(const EngineApi::RequestInfo& info)
    {
        sent.clear();
        if (info.action == EngineApi::AppAction::ToStop && !runs(info.page))
            return *this;
        const auto action = scheduler.schedule(describe(info));
        while (!action->allFinished())
            for (const auto& order : action->sendNext())
            {
                sent.push_back(order);
                carryOut(*order);
                action->markPage(order->page, true);
            }
        return *this;
    }

    ScheduleInput describe(const EngineApi::RequestInfo& info) const
    {
        ScheduleInput input;
        input.request = info;
        input.frontShow = scheduler.getState().frontShowPage;
        input.normalSource = scheduler.getState().lastNormalSource;
        input.bluetoothSetting = bluetoothSetting;
        for (const auto& [number, page] : pages)
        {
            EngineApi::ScheduleInfo::Ptr record = new EngineApi::ScheduleInfo(page.info);
            if (number == Pubhead::mbBTPhone)
                adjustPhone(*record);
            input.pages[number] = record;
            if (page.running && page.info.isRear)
                input.rearPage = number;
            else if (page.running)
                input.runningPages.push_back(number);
        }
        return input;
    }

    bool runs(int page) const
    {
        const auto found = pages.find(page);
        return found != pages.end() && found->second.running;
    }
    const EngineApi::PageStates& states(int page) const { return pages.at(page).info.states; }
    bool plays(int page) const { return states(page).playState == EngineApi::PageStates::playing; }
    bool isHeard(int page) const { return states(page).audioState == EngineApi::PageStates::held; }
    bool isCalling() const { return calling; }
    bool isSeen(int page) const { return states(page).videoState == EngineApi::PageStates::held; }
    const ScheduleState& remembered() const { return scheduler.getState(); }

    /** Running pages that satisfy the condition, in page order. */
    template <typename Condition>
    std::vector<int> running(Condition condition) const
    {
        std::vector<int> found;
        for (const auto& [number, page] : pages)
            if (page.running && condition(page.info))
                found.push_back(number);
        return found;
    }
    std::vector<int> onTop() const
    {
        return running([](const EngineApi::ScheduleInfo& info) { return info.states.showState == 1; });
    }

    /** What the last request sent, in the order of sending: "ToRun mbFM enter", "ToChange mbMainMenu hide(mbFM)" ... */
    std::vector<std::string> orders() const
    {
        std::vector<std::string> texts;
        for (const auto& order : sent)
            texts.push_back(text(*order));
        return texts;
    }
    const std::vector<EngineApi::AppStateSwitch::Ptr>& sentOrders() const { return sent; }

private:
    void adjustPhone(EngineApi::ScheduleInfo& phone) const
    {
        if (!calling)
            phone.playLevel = phone.audioLevel = EngineApi::PageScheduleConfig::noCompetition;
    }

    void carryOut(const EngineApi::AppStateSwitch& order)
    {
        auto& page = pages.at(order.page);
        page.running = order.switchType != EngineApi::SwitchType::ToStop;
        if (order.switchType != EngineApi::SwitchType::ToShowTopLevel)
            page.info.states = order.states;
    }

    static std::string text(const EngineApi::AppStateSwitch& order)
    {
        std::string line = EngineApi::switchTypeName(static_cast<int>(order.switchType));
        line += std::string(" ") + Pubhead::pageName(order.page);
        const auto& command = order.commandLine;
        if (command == nullptr)
            return line;
        if (command->isPageShow())
            return line + " show";
        if (command->isSourceEnter())
            return line + (command->isOnTop() ? " enter on top" : " enter");
        return line + (command->isPageHide() ? " hide(" : " exit(") + Pubhead::pageName(command->getOtherPage()) + ")";
    }

    Scheduler scheduler;
    std::map<int, Page> pages;
    bool calling = false;
    bool bluetoothSetting = true;
    std::vector<EngineApi::AppStateSwitch::Ptr> sent;
};

} // namespace EngineLayer
