#pragma once

#include "EngineApi/ScheduleRecords.h"
#include "kernel/SystemMessage.h"
#include "platform/base/Time.h"

namespace EngineApi
{

/** Where a page stands, as its last order left it. */
struct PageRunState
{
    enum Step { running = 1, stopped = 2 };

    int reportedStep = stopped; ///< running after a run or change order, stopped after a stop order
    PageStates states {};
    Platform::Clock::time_point since {}; ///< when the order was carried out
};

/** A page as the managers see it, implemented by its handler in an application task. Any thread may call all of it. */
class PageHandler : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<PageHandler>;

    virtual const PageScheduleConfig& getConfig() const = 0;
    /** A consistent copy. */
    virtual PageRunState getRunState() const = 0;
    virtual bool isAvailable() const = 0;
    /** True keeps the page's program running when programs that nobody needs are closed. */
    virtual bool isResident() const = 0;
    virtual juce::String getBackProgramPath() const = 0;

    virtual void requestState(AppAction action, bool autoSwitch) = 0;
    virtual void requestShow(bool autoSwitch) = 0;
    /** Tells the page's program that the unit goes off. */
    virtual void notifyPage() = 0;
    /** Where the page's sound comes from now. Whoever changes it calls `audioChannelChanged`. */
    virtual int getAudioChannel() const { return getConfig().audioChannel; }
    /** May adjust the record of this page before the scheduler uses it. */
    virtual void adjustScheduleInfo(ScheduleInfo& info) = 0;

    int getPage() const { return getConfig().page; }
    int getAppType() const { return getConfig().appType; }
    bool isRunning() const { return getRunState().reportedStep != PageRunState::stopped; }
    bool isOnTop() const { return getRunState().states.showState == 1; }
};

} // namespace EngineApi
