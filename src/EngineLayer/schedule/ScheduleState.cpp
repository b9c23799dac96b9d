#include "EngineLayer/schedule/ScheduleState.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

EngineApi::ScheduleInfo::Ptr copyOf(const EngineApi::ScheduleInfo::Ptr& record)
{
    return record == nullptr ? nullptr : new EngineApi::ScheduleInfo(*record);
}

bool startsSource(EngineApi::AppAction action)
{
    return action == EngineApi::AppAction::ToRun || action == EngineApi::AppAction::ToPlay;
}

juce::String describe(const EngineApi::ScheduleInfo& info)
{
    juce::String line;
    line << "APP: " << Pubhead::pageName(info.page);
    line << " | SC: " << info.states.showState << " L: " << info.showLevel;
    line << " | SP: " << info.states.playState << " L: " << info.playLevel;
    line << " | VC: " << info.states.videoState << " L: " << info.videoLevel;
    line << " | AC: " << info.states.audioState << " L: " << info.audioLevel;
    return line;
}

void describeTable(std::vector<juce::String>& lines, const char* heading, const ScheduleState::List& table)
{
    lines.emplace_back(heading);
    for (const auto& info : table)
        if (info != nullptr)
            lines.push_back(describe(*info));
}

} // namespace

bool ScheduleInput::isRunning(int page) const
{
    return page == rearPage || std::ranges::find(runningPages, page) != runningPages.end();
}

void ScheduleState::build(const ScheduleInput& input)
{
    currentFront.clear();
    nextFront.clear();
    showStack.clear();
    currentRear = nextRear = nullptr;
    verdicts.clear();
    lastSourceChanged = normalSourceChanged = rearChanged = frontShowChanged = false;

    request = copyOf(input.find(input.request.page));
    if (request == nullptr)
        return;

    const bool displacesSources = startsSource(input.request.action) && request->isNormalSource;
    for (const int page : input.runningPages)
    {
        const auto record = input.find(page);
        if (record == nullptr)
            continue;
        currentFront.push_back(copyOf(record));
        if (displacesSources && record->isNormalSource && page != request->page)
            verdicts.push_back({ Verdict::Rule::displaced, page, request->page });
        else if (page != request->page)
            nextFront.push_back(copyOf(record));
    }
    if (const auto rear = input.find(input.rearPage))
    {
        currentRear = copyOf(rear);
        // The rear zone has room for one: a rear request displaces what is there.
        if (!request->isRear)
            nextRear = copyOf(rear);
        else if (rear->page != request->page)
            verdicts.push_back({ Verdict::Rule::displaced, rear->page, request->page });
    }
    stackShownPages(input.request.action);
    rememberSources(input);
}

void ScheduleState::stackShownPages(EngineApi::AppAction action)
{
    showStack = nextFront;
    if (nextRear != nullptr)
        showStack.push_back(nextRear);
    if (action == EngineApi::AppAction::ToPlay)
        return;

    // Of pages that share a number the last one stays in the stack; the others keep their number outside of it.
    std::map<std::int32_t, EngineApi::ScheduleInfo::Ptr> byNumber;
    for (const auto& info : showStack)
        byNumber[info->states.showState] = info;
    showStack.clear();
    for (const auto& [number, info] : byNumber)
    {
        showStack.push_back(info);
        info->states.showState = static_cast<std::int32_t>(showStack.size());
    }
}

void ScheduleState::rememberSources(const ScheduleInput& input)
{
    if (!request->isSourcePage)
        return;
    const auto action = input.request.action;
    const bool starts = startsSource(action) && !input.isRunning(request->page);
    if (request->isRear)
    {
        if (!starts && action != EngineApi::AppAction::ToStop)
            return;
        rearChanged = true;
        rearPage =
            action == EngineApi::AppAction::ToStop ? static_cast<std::int32_t>(Pubhead::mbRearOff) : request->page;
    }
    else if (starts)
    {
        lastSourceChanged = true;
        lastSourcePage = request->page;
        if (request->isNormalSource)
        {
            normalSourceChanged = true;
            lastNormalSource = request->page;
        }
    }
    else if (action == EngineApi::AppAction::ToStop)
    {
        lastSourceChanged = true;
        lastSourcePage = lastNormalSource;
    }
}

std::vector<juce::String> ScheduleState::describeBuilt() const
{
    std::vector<juce::String> lines;
    describeTable(lines, "************ | Request App State", { request });
    describeTable(lines, "++++++++++++ | Current Front App State", currentFront);
    describeTable(lines, "++++++++++++ | Current Rear App State", { currentRear });
    describeTable(lines, "++++++++++++ | Next Front App State", nextFront);
    describeTable(lines, "++++++++++++ | Next Rear App State", { nextRear });
    return lines;
}

std::vector<juce::String> ScheduleState::describeScheduled() const
{
    std::vector<juce::String> lines;
    describeTable(lines, "------------ | After Schedule: Request App State", { request });
    describeTable(lines, "------------ | Next Front App State", nextFront);
    describeTable(lines, "------------ | Next Rear App State", { nextRear });
    return lines;
}

} // namespace EngineLayer
