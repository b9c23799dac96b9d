#include "Extend/MonitorThread.h"

#include "platform/base/Logger.h"

namespace Extend
{

namespace
{

constexpr Platform::Log logger { "Extend/ExeMonitor_win32", "MonitorThread" };

constexpr int failedWaitDelayMs = 20;

} // namespace

MonitorThread::MonitorThread(Platform::Mutex& statesLock, std::function<void(int)> endHandler)
    : Platform::Thread("MonitorThread")
    , lock(statesLock)
    , onEnded(std::move(endHandler))
{
}

MonitorThread::~MonitorThread()
{
    stop();
}

void MonitorThread::watchProcess(int appType, Platform::ProcessHandle process)
{
    if (process == nullptr)
        return;
    {
        const std::lock_guard guard(lock);
        watched[appType] = std::move(process);
    }
    waiter.wake();
}

Platform::ProcessHandle MonitorThread::getProcess(int appType) const
{
    const std::lock_guard guard(lock);
    const auto found = watched.find(appType);
    return found == watched.end() ? nullptr : found->second;
}

void MonitorThread::stop()
{
    signalThreadShouldExit();
    waiter.wake();
    if (!Platform::awaitEnd(*this))
        logger().error("the thread does not stop");
}

void MonitorThread::run()
{
    while (!threadShouldExit())
    {
        // The wait works on a copy: programs may be added meanwhile, which wakes it.
        std::vector<int> appTypes;
        std::vector<Platform::ProcessHandle> processes;
        {
            const std::lock_guard guard(lock);
            for (const auto& [appType, process] : watched)
            {
                appTypes.push_back(appType);
                processes.push_back(process);
            }
        }
        const int outcome = waiter.wait(processes);
        if (outcome == Platform::ProcessWaiter::failed)
            wait(failedWaitDelayMs);
        else if (outcome != Platform::ProcessWaiter::woken)
            handleEnd(appTypes[static_cast<std::size_t>(outcome)], processes[static_cast<std::size_t>(outcome)]);
    }
}

void MonitorThread::handleEnd(int appType, const Platform::ProcessHandle& process)
{
    const std::lock_guard guard(lock);
    const auto found = watched.find(appType);
    if (found == watched.end() || found->second != process)
        return; // Another process of the program has taken its place.
    watched.erase(found);
    onEnded(appType);
}

} // namespace Extend
