#include "EngineLayer/schedule/Scheduler.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

constexpr auto notShown = EngineApi::PageStates::notShown;
constexpr auto noCompetition = EngineApi::PageScheduleConfig::noCompetition;

/**
    A page of this band mixes with what it would silence; one of exactly `alwaysMixes` also with what would silence it.
*/
constexpr std::int32_t firstMixing = 40, lastMixing = 49, alwaysMixes = 40;

// Who gives way when `page`, the one that is being decided, wants what `other` has.

void applyVideoRule(EngineApi::ScheduleInfo& page, EngineApi::ScheduleInfo& other)
{
    page.states.videoState = EngineApi::PageStates::held;
    other.states.videoState = EngineApi::PageStates::notHeld;
}

/** Which rule decided about `page`. */
Verdict::Rule applyPlayRule(EngineApi::ScheduleInfo& page, EngineApi::ScheduleInfo& other)
{
    auto& own = page.states.playState;
    auto& theirs = other.states.playState;
    const bool wins = other.playLevel < page.playLevel;
    if (wins ? page.playLevel >= firstMixing && page.playLevel <= lastMixing : other.playLevel == alwaysMixes)
    {
        own = theirs = EngineApi::PageStates::mixed;
        return Verdict::Rule::mixes;
    }
    if (wins)
    {
        own = EngineApi::PageStates::playing;
        theirs = EngineApi::PageStates::stopped;
        return Verdict::Rule::silences;
    }
    own = EngineApi::PageStates::stopped;
    return Verdict::Rule::outplayed;
}

void applyAudioRule(EngineApi::ScheduleInfo& page, EngineApi::ScheduleInfo& other)
{
    const bool mixed =
        page.states.playState == EngineApi::PageStates::mixed && other.states.playState == EngineApi::PageStates::mixed;
    page.states.audioState = EngineApi::PageStates::held;
    other.states.audioState = mixed ? EngineApi::PageStates::held : EngineApi::PageStates::notHeld;
}

/**
    Applies the rule to the pages of the front zone that hold what `page` wants. True when there was one. The rear zone
    holds one page, which has displaced the one before it.
*/
template <typename Holds, typename Rule>
bool contend(EngineApi::ScheduleInfo& page, const ScheduleState::List& front, bool rear, Holds holds, Rule rule)
{
    bool contended = false;
    for (const auto& other : front)
    {
        if (rear || !holds(other->states))
            continue;
        rule(page, *other);
        contended = true;
    }
    return contended;
}

} // namespace

void Scheduler::judge(Verdict::Rule rule, const EngineApi::ScheduleInfo& page, const EngineApi::ScheduleInfo& other)
{
    using Rule = Verdict::Rule;
    const bool ofScreen = rule == Rule::onTop || rule == Rule::behind || rule == Rule::uncovered;
    state.verdicts.push_back({ rule, page.page, other.page, ofScreen ? page.showLevel : page.playLevel,
                               ofScreen ? other.showLevel : other.playLevel });
}

void Scheduler::resolveShow(EngineApi::ScheduleInfo& page)
{
    auto& own = page.states.showState;
    if (page.showLevel == noCompetition)
    {
        state.verdicts.push_back({ Verdict::Rule::neverShown, page.page });
        if (own != notShown)
            releaseShow(page);
        return;
    }
    own = notShown;
    auto* best = state.showStack.empty() ? &page : state.showStack.front().get();
    const auto& before = *best;
    // Only the page that is overtaken moves down: it may share its new number with the next until the stack is
    // renumbered.
    for (const auto& other : state.showStack)
    {
        auto& theirs = other->states.showState;
        if (theirs != notShown && page.showLevel > other->showLevel && theirs < own)
            own = theirs++;
        if (own < best->states.showState)
            best = &page;
        if (theirs < best->states.showState)
            best = other.get();
    }
    best->states.showState = 1;
    judge(best == &page ? Verdict::Rule::onTop : Verdict::Rule::behind, page, best == &page ? before : *best);
}

void Scheduler::releaseShow(EngineApi::ScheduleInfo& page)
{
    if (page.states.showState == 1)
    {
        auto& front = state.nextFront;
        const auto showState = [](const EngineApi::ScheduleInfo::Ptr& info) { return info->states.showState; };
        const auto next = std::ranges::min_element(front, {}, showState);
        const auto rearNumber = state.nextRear == nullptr ? notShown : showState(state.nextRear);
        // A rear page that comes next is not raised.
        if (next != front.end() && showState(*next) < notShown && showState(*next) <= rearNumber)
        {
            const EngineApi::ScheduleInfo::Ptr raised = new EngineApi::ScheduleInfo(**next);
            raised->states.showState = 1;
            judge(Verdict::Rule::uncovered, *raised, page);
            front.erase(next);
            resolveVideo(*raised, false);
            front.push_back(raised);
        }
    }
    page.states.showState = notShown;
    page.states.videoState = EngineApi::PageStates::notHeld;
}

void Scheduler::resolveVideo(EngineApi::ScheduleInfo& page, bool rear)
{
    page.states.videoState = EngineApi::PageStates::notHeld;
    if (page.videoLevel == noCompetition || page.states.showState != 1)
        return;
    const auto holds = [](const EngineApi::PageStates& states)
    { return states.videoState == EngineApi::PageStates::held; };
    if (!contend(page, state.nextFront, rear, holds, applyVideoRule))
        page.states.videoState = EngineApi::PageStates::held;
}

void Scheduler::resolvePlay(EngineApi::ScheduleInfo& page, bool rear)
{
    if (page.playLevel == noCompetition)
    {
        state.verdicts.push_back({ Verdict::Rule::neverPlays, page.page });
        if (page.states.playState != EngineApi::PageStates::stopped)
            releasePlay(page);
        return;
    }
    page.states.playState = EngineApi::PageStates::stopped;
    const auto plays = [](const EngineApi::PageStates& states)
    { return states.playState != EngineApi::PageStates::stopped; };
    const auto decide = [this](EngineApi::ScheduleInfo& asking, EngineApi::ScheduleInfo& other)
    {
        const auto rule = applyPlayRule(asking, other);
        judge(rule, asking, other);
        if (rule == Verdict::Rule::silences)
            judge(Verdict::Rule::silencedBy, other, asking);
    };
    if (contend(page, state.nextFront, rear, plays, decide))
        return;
    page.states.playState = EngineApi::PageStates::playing;
    judge(Verdict::Rule::plays, page, page);
}

void Scheduler::releasePlay(EngineApi::ScheduleInfo& page)
{
    auto& front = state.nextFront;
    if (page.states.playState == EngineApi::PageStates::playing)
    {
        const auto next = std::ranges::max_element(front, {}, [](const auto& info) { return info->playLevel; });
        if (next != front.end() && (*next)->playLevel > noCompetition)
        {
            const EngineApi::ScheduleInfo::Ptr silent = *next;
            const EngineApi::ScheduleInfo::Ptr heir = new EngineApi::ScheduleInfo(*silent);
            heir->states.playState = EngineApi::PageStates::playing;
            front.erase(next);
            resolveAudio(*heir, false);
            const bool isHeir = heir->states.audioState == EngineApi::PageStates::held;
            front.push_back(isHeir ? heir : silent);
            if (isHeir)
                judge(Verdict::Rule::heir, *heir, page);
        }
    }
    else if (page.states.playState == EngineApi::PageStates::mixed)
    {
        const auto partner = std::ranges::find_if(front, [](const auto& info)
                                                  { return info->states.playState == EngineApi::PageStates::mixed; });
        if (partner != front.end())
        {
            (*partner)->states.playState = EngineApi::PageStates::playing;
            (*partner)->states.audioState = EngineApi::PageStates::held;
        }
    }
    page.states.playState = EngineApi::PageStates::stopped;
    page.states.audioState = EngineApi::PageStates::notHeld;
}

void Scheduler::resolveAudio(EngineApi::ScheduleInfo& page, bool rear)
{
    page.states.audioState = EngineApi::PageStates::notHeld;
    if (page.audioLevel == noCompetition || page.states.playState == EngineApi::PageStates::stopped)
        return;
    const auto holds = [](const EngineApi::PageStates& states)
    { return states.audioState == EngineApi::PageStates::held; };
    if (!contend(page, state.nextFront, rear, holds, applyAudioRule))
        page.states.audioState = EngineApi::PageStates::held;
}

} // namespace EngineLayer
