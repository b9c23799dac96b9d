#include "EngineLayer/schedule/Scheduler.h"

#include <benchmark/benchmark.h>

using namespace EngineLayer;
using namespace Pubhead;

namespace
{

/** Every page registered; six run: the menu, the settings and the camera behind a source, the phone, one rear page. */
ScheduleInput busyUnit()
{
    ScheduleInput input;
    for (int page = 0; page < NUM_OF_PAGES; ++page)
    {
        const auto* config = EngineApi::pageScheduleConfig(page);
        if (config == nullptr)
            continue;
        EngineApi::ScheduleInfo::Ptr info = new EngineApi::ScheduleInfo();
        info->page = page;
        info->showLevel = config->showLevel;
        info->playLevel = config->playLevel;
        info->videoLevel = config->videoLevel;
        info->audioLevel = config->audioLevel;
        info->isSourcePage = config->isSourcePage;
        info->isNormalSource = config->isNormalSource;
        info->isRear = config->isRear;
        input.pages[page] = info;
    }
    std::int32_t place = 0;
    for (const int page : { mbFM, mbMainMenu, mbSetup, mbCamera, mbBTPhone, mbRearAV1 })
        input.pages[page]->states.showState = ++place;
    input.pages[mbFM]->states = { 1, EngineApi::PageStates::playing, EngineApi::PageStates::held,
                                  EngineApi::PageStates::held };
    input.runningPages = { mbBTPhone, mbCamera, mbMainMenu, mbSetup, mbFM };
    input.rearPage = mbRearAV1;
    input.request = { mbUSBAudio, EngineApi::AppAction::ToRun, false };
    input.frontShow = input.normalSource = mbFM;
    return input;
}

/** The most that can run: every front page, in the order of the table. */
ScheduleInput everythingRuns()
{
    auto input = busyUnit();
    input.runningPages.clear();
    std::int32_t place = 0;
    for (auto& [page, info] : input.pages)
        if (!info->isRear)
        {
            input.runningPages.push_back(page);
            info->states.showState = ++place;
        }
    return input;
}

void schedule(benchmark::State& state, const ScheduleInput& input)
{
    Scheduler scheduler;
    for (auto _ : state)
        benchmark::DoNotOptimize(scheduler.schedule(input));
}
BENCHMARK_CAPTURE(schedule, , busyUnit())->Name("Scheduler/sixPagesRun");
BENCHMARK_CAPTURE(schedule, , everythingRuns())->Name("Scheduler/everyFrontPageRuns");

/** What the manager pays in any case: a fresh description of every page. */
void copyInput(benchmark::State& state)
{
    const auto input = busyUnit();
    for (auto _ : state)
    {
        auto copy = input;
        for (auto& [page, info] : copy.pages)
            info = new EngineApi::ScheduleInfo(*info);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(copyInput)->Name("Scheduler/copyOfTheInput");

} // namespace
