#include "EngineLayer/schedule/Scheduler.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

constexpr auto notShown = EngineApi::PageStates::notShown;

bool raises(EngineApi::AppAction action)
{
    return action == EngineApi::AppAction::ToRun || action == EngineApi::AppAction::ToShow;
}

bool plays(EngineApi::AppAction action)
{
    return action == EngineApi::AppAction::ToRun || action == EngineApi::AppAction::ToPlay;
}

/** Lets the requested page win against pages of its own level, for the duration of one schedule. */
class LevelBoost
{
public:
    LevelBoost(EngineApi::ScheduleInfo& boosted, EngineApi::AppAction action)
        : info(boosted)
        , showLevel(boosted.showLevel)
        , playLevel(boosted.playLevel)
    {
        if (raises(action) && showLevel != EngineApi::PageScheduleConfig::noCompetition)
            ++info.showLevel;
        if (plays(action) && playLevel != EngineApi::PageScheduleConfig::noCompetition)
            ++info.playLevel;
    }
    ~LevelBoost()
    {
        info.showLevel = showLevel;
        info.playLevel = playLevel;
    }
    LevelBoost(const LevelBoost&) = delete;
    LevelBoost& operator=(const LevelBoost&) = delete;

private:
    EngineApi::ScheduleInfo& info;
    const std::int32_t showLevel, playLevel;
};

} // namespace

SwitchAction::Ptr Scheduler::schedule(const ScheduleInput& input)
{
    state.build(input);
    const auto action = input.request.action;
    if (state.request == nullptr || action < EngineApi::AppAction::ToRun || action > EngineApi::AppAction::ToStop)
    {
        SwitchAction::Ptr nothing = new SwitchAction();
        nothing->requestPage = input.request.page;
        return nothing;
    }
    {
        const LevelBoost boost(*state.request, action);
        const bool toFront = showAllowed(input);
        if (raises(action) && !toFront)
            state.verdicts.push_back({ Verdict::Rule::notRaised, input.request.page, input.frontShow });
        resolve(action, toFront);
        dropIdlePages();
        if (action == EngineApi::AppAction::ToStop)
            startDefaultSource(input);
    }
    rememberFrontPage();
    return buildSwitchAction(input.request.page, input.deviceFlag);
}

bool Scheduler::showAllowed(const ScheduleInput& input)
{
    using namespace Pubhead;
    const int page = input.request.page;
    const auto action = input.request.action;
    if (!input.request.autoSwitch)
        return true;
    const auto handler = input.find(page);
    const bool raisesSource = handler != nullptr && raises(action) && handler->isNormalSource;
    if (input.frontShow == mbNavi && handler != nullptr)
        return !raisesSource && !(raises(action) && page == mbBTPhone);
    // The setup screen stays while the user switches off what plays.
    if (input.frontShow == mbSetup && handler != nullptr)
        return !(input.normalSource == mbBTAudio && !input.bluetoothSetting) &&
               !(input.normalSource == mbiPodPandora && !input.pandoraSetting);
    if (input.frontShow == mbThirdPart && handler != nullptr)
        return !raisesSource;
    return !(input.normalSource == mbDiscAuto && input.frontShow != mbDiscAuto &&
             (page == mbDiscAudio || page == mbDiscVideo));
}

void Scheduler::resolve(EngineApi::AppAction action, bool toFront)
{
    auto& page = *state.request;
    switch (action)
    {
    case EngineApi::AppAction::ToRun:
        run(page, toFront);
        break;
    case EngineApi::AppAction::ToShow:
        show(page, toFront);
        placeRequest();
        break;
    case EngineApi::AppAction::ToPlay:
        if (page.isRear)
            break;
        resolvePlay(page, false);
        resolveAudio(page, false);
        placeRequest();
        break;
    case EngineApi::AppAction::ToHide:
        if (page.isRear)
            break;
        releaseShow(page);
        placeRequest();
        break;
    case EngineApi::AppAction::ToStop:
        if (page.isRear)
            break;
        releasePlay(page);
        releaseShow(page);
        break;
    case EngineApi::AppAction::None:
        break;
    }
}

void Scheduler::run(EngineApi::ScheduleInfo& page, bool toFront)
{
    show(page, toFront);
    resolvePlay(page, page.isRear);
    resolveAudio(page, page.isRear);
    placeRequest();
}

void Scheduler::show(EngineApi::ScheduleInfo& page, bool toFront)
{
    if (!toFront)
        return;
    resolveShow(page);
    resolveVideo(page, page.isRear);
}

void Scheduler::placeRequest()
{
    if (state.request->isRear)
        state.nextRear = state.request;
    else
        state.nextFront.push_back(state.request);
}

void Scheduler::dropIdlePages()
{
    std::erase_if(state.nextFront,
                  [this](const EngineApi::ScheduleInfo::Ptr& info)
                  {
                      return info->page != state.request->page && info->states.showState == notShown &&
                             info->states.playState == EngineApi::PageStates::stopped;
                  });
    if (state.nextRear != nullptr && state.nextRear->states.showState == notShown)
        state.nextRear = nullptr;
}

void Scheduler::startDefaultSource(const ScheduleInput& input)
{
    auto& front = state.nextFront;
    const auto defaultSource = input.find(input.defaultSource);
    const bool menuOnTop = std::ranges::any_of(
        front, [](const auto& info) { return info->page == Pubhead::mbMainMenu && info->states.showState == 1; });
    if (defaultSource == nullptr || !menuOnTop ||
        std::ranges::any_of(front, [](const auto& info) { return info->isNormalSource; }))
        return;

    std::int32_t last = 1;
    for (const auto& info : front)
        if (info->states.showState < notShown)
            last = std::max(last, info->states.showState);
    EngineApi::ScheduleInfo::Ptr started = new EngineApi::ScheduleInfo(*defaultSource);
    started->states = { last + 1, EngineApi::PageStates::playing, EngineApi::PageStates::held,
                        EngineApi::PageStates::notHeld };
    front.push_back(started);
    state.verdicts.push_back({ Verdict::Rule::startedInstead, started->page, state.request->page });
}

void Scheduler::rememberFrontPage()
{
    auto remember = [this](const EngineApi::ScheduleInfo& info)
    {
        if (info.states.showState != 1 || state.frontShowPage == info.page)
            return;
        state.frontShowPage = info.page;
        state.frontShowChanged = true;
        if (info.isSourcePage && !info.isRear && info.page != state.lastSourcePage)
        {
            state.lastSourcePage = info.page;
            state.lastSourceChanged = true;
        }
    };
    for (const auto& info : state.nextFront)
        remember(*info);
    // The screen shows rear pages too: one that is raised takes the top of the same stack.
    if (state.nextRear != nullptr)
        remember(*state.nextRear);
}

std::vector<juce::String> Scheduler::describeRequest(const EngineApi::RequestInfo& request)
{
    const auto rule = juce::String::repeatedString("-", 60);
    juce::String line;
    line << "ReqAPP: " << Pubhead::pageName(request.page)
         << " | ReqType: " << EngineApi::actionName(static_cast<int>(request.action))
         << " | AutoSwitch: " << (request.autoSwitch ? 1 : 0);
    return { rule, line, rule };
}

std::vector<juce::String> Scheduler::describeBefore(const ScheduleInput& input)
{
    ScheduleState tables;
    tables.build(input);
    return tables.describeBuilt();
}

} // namespace EngineLayer
