#pragma once

#include "EngineApi/ScheduleRecords.h"
#include "EngineLayer/schedule/Verdict.h"

#include <map>

namespace EngineLayer
{

/** Everything that one schedule is decided from. */
struct ScheduleInput
{
    EngineApi::RequestInfo request;
    /**
        Every registered page as its handler describes it now, adjusted by the handler. The scheduler works on copies.
    */
    std::map<int, EngineApi::ScheduleInfo::Ptr> pages;
    std::vector<int> runningPages;            ///< front pages that run, in the order of the running list
    int rearPage = Pubhead::NUM_OF_PAGES;     ///< the rear page that runs; mbRearOff or NUM_OF_PAGES when none does
    int frontShow = Pubhead::NUM_OF_PAGES;    ///< the manager's front page at the start of this schedule
    int normalSource = Pubhead::NUM_OF_PAGES; ///< the manager's normal source at the start of this schedule
    bool deviceFlag = false;                  ///< flag of the command lines that show a page or enter a source
    bool bluetoothSetting = true;             ///< setting 7 is not 0
    bool pandoraSetting = true;               ///< setting 9 is not 0
    int defaultSource = Pubhead::mbAVOff;

    /** The page's record, or null for a page that nobody registered. */
    EngineApi::ScheduleInfo::Ptr find(int page) const
    {
        const auto found = pages.find(page);
        return found == pages.end() ? nullptr : found->second;
    }
    bool isRunning(int page) const;
};

/** The scheduler's tables. The lists are rebuilt for every request, the remembered pages last. */
struct ScheduleState
{
    using List = std::vector<EngineApi::ScheduleInfo::Ptr>;
    using Orders = std::vector<EngineApi::AppStateSwitch::Ptr>;

    List nextFront;    ///< the front pages as they will be
    List currentFront; ///< the front pages as they are
    List showStack; ///< the pages that compete for the screen, top first; shares its records with nextFront, nextRear
    EngineApi::ScheduleInfo::Ptr nextRear, currentRear; ///< the page of the rear zone, or null
    EngineApi::ScheduleInfo::Ptr request;               ///< the requested page; null when nobody registered it

    /** Set when the remembered page of the same name changes in a schedule, cleared at the start of the next. */
    bool lastSourceChanged = false, normalSourceChanged = false, rearChanged = false, frontShowChanged = false;

    std::int32_t lastNormalSource = Pubhead::NUM_OF_PAGES;
    std::int32_t lastSourcePage = Pubhead::NUM_OF_PAGES;
    std::int32_t rearPage = Pubhead::mbRearOff;
    std::int32_t frontShowPage = Pubhead::NUM_OF_PAGES;

    Orders stopList, changeList, runList;
    std::vector<Verdict> verdicts;

    /** Prepares the tables for the request of the input. */
    void build(const ScheduleInput& input);

    /** Log lines of the tables under their headings, as they were built and as the schedule left them. */
    std::vector<juce::String> describeBuilt() const;
    std::vector<juce::String> describeScheduled() const;

private:
    void stackShownPages(EngineApi::AppAction action);
    void rememberSources(const ScheduleInput& input);
};

} // namespace EngineLayer
