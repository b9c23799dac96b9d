#pragma once

#include "EngineApi/PageHandler.h"
#include "EngineLayer/schedule/Scheduler.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTimer.h"
#include "platform/base/Threads.h"

#include <map>
#include <set>

namespace EngineLayer
{

/**
    Owns the data of scheduling: the page handlers, the snapshot of the pages that run, the remembered pages and the
    scheduler. Any thread may query; the answers are copies made under one lock. Changes are made on the system state
    manager's thread, except the registration of handlers (message thread).
*/
class ApplicationManager : public Kernel::SystemTimer, public Kernel::Singleton<ApplicationManager>
{
public:
    /** The pages that the last refresh found. NUM_OF_PAGES where there is none. */
    struct Snapshot
    {
        std::int32_t normalSource = Pubhead::NUM_OF_PAGES;
        std::int32_t frontShow = Pubhead::NUM_OF_PAGES;
        std::int32_t firstBackSource = Pubhead::NUM_OF_PAGES; ///< the first page behind the top
        std::int32_t lastBack = Pubhead::NUM_OF_PAGES;        ///< the page furthest back
        std::int32_t playing = Pubhead::NUM_OF_PAGES;
        std::int32_t rearRunning = Pubhead::NUM_OF_PAGES;
        std::vector<int> runningPages;
        // The scheduler's remembered pages, ahead of the ones above while a switch runs.
        std::int32_t lastNormalSource = Pubhead::NUM_OF_PAGES;
        std::int32_t lastSourcePage = Pubhead::NUM_OF_PAGES;
    };

    /** The system state manager gets its expiry, so the id differs from the manager's own timer. */
    static constexpr int backgroundTimer = 2;
    static constexpr int backgroundCheckMs = 5000;

    void registerHandler(EngineApi::PageHandler::Ptr handler);
    void unregisterHandler(const EngineApi::PageHandler::Ptr& handler);
    EngineApi::PageHandler::Ptr getHandler(int page) const;
    std::map<int, EngineApi::PageHandler::Ptr> getAllHandlers() const;
    /** The page of that type that was registered last, or NUM_OF_PAGES. */
    int getPageOfAppType(int appType) const;
    Snapshot getSnapshot() const;

    /** Decides one request; the answer is never null. */
    SwitchAction::Ptr schedule(const EngineApi::RequestInfo& request);
    void refreshSnapshot();
    /** Refreshes the snapshot and announces a completed switch. */
    void postSwitchUpdate();
    /** Programs that nobody needs are closed after a while. */
    void startBackgroundCheck();
    /** The background timer has expired. */
    void checkBackground();

private:
    friend class Kernel::Singleton<ApplicationManager>;
    ApplicationManager();

    ScheduleInput collectInput(const EngineApi::RequestInfo& request) const;
    void announceNormalSource(int page) const;
    void closeIdlePrograms();
    std::set<int> findIdlePrograms() const;

    Platform::Mutex lock;
    std::map<int, EngineApi::PageHandler::Ptr> handlers;
    std::map<int, int> pageOfAppType;
    Snapshot snapshot;
    Scheduler scheduler; ///< the state manager's thread only
};

} // namespace EngineLayer
