#pragma once

#include "EngineLayer/schedule/ScheduleState.h"
#include "EngineLayer/schedule/SwitchAction.h"

namespace EngineLayer
{

/**
    Decides the next states of every page: page states and a request in, orders out. It knows no thread, clock or
    device; what lasts from one schedule to the next are the remembered pages of its state. One owner, one thread at a
    time.
*/
class Scheduler
{
public:
    /**
        Never null; without action when nothing is to be done, for a page that nobody registered and for no known
        action.
    */
    SwitchAction::Ptr schedule(const ScheduleInput& input);

    /** The tables as the last schedule left them, and the remembered pages. */
    const ScheduleState& getState() const { return state; }

    /** Whether the request may come to the front: what the system asks for does not push certain front pages away. */
    static bool showAllowed(const ScheduleInput& input);

    /** Log lines of the request: the request between two rules. */
    static std::vector<juce::String> describeRequest(const EngineApi::RequestInfo& request);
    /** Log lines of the tables as they stand before this schedule, and as the last schedule left them. */
    static std::vector<juce::String> describeBefore(const ScheduleInput& input);
    std::vector<juce::String> describeAfter() const { return state.describeScheduled(); }

private:
    void resolve(EngineApi::AppAction action, bool toFront);
    void run(EngineApi::ScheduleInfo& page, bool toFront);
    void show(EngineApi::ScheduleInfo& page, bool toFront);
    void placeRequest();
    void dropIdlePages();
    void startDefaultSource(const ScheduleInput& input);
    void rememberFrontPage();

    // SchedulerResolution.cpp: who gets the screen, the sound, and the channels.
    void judge(Verdict::Rule rule, const EngineApi::ScheduleInfo& page, const EngineApi::ScheduleInfo& other);
    void resolveShow(EngineApi::ScheduleInfo& page);
    void releaseShow(EngineApi::ScheduleInfo& page);
    void resolveVideo(EngineApi::ScheduleInfo& page, bool rear);
    void resolvePlay(EngineApi::ScheduleInfo& page, bool rear);
    void releasePlay(EngineApi::ScheduleInfo& page);
    void resolveAudio(EngineApi::ScheduleInfo& page, bool rear);

    // SwitchActionBuilder.cpp: the difference between the tables as orders.
    SwitchAction::Ptr buildSwitchAction(int requestPage, bool deviceFlag);
    void orderStops();
    void orderFrontPages(int requestPage, bool deviceFlag);
    void orderRearPage(bool deviceFlag);
    /** Files a change; a page that comes to the top is handed back instead, to be filed after the others. */
    EngineApi::AppStateSwitch::Ptr orderChange(const EngineApi::ScheduleInfo& current,
                                               const EngineApi::ScheduleInfo& next, bool deviceFlag);

    ScheduleState state;
};

} // namespace EngineLayer
