#pragma once

#include "platform/base/Process.h"
#include "platform/base/Threads.h"

#include <functional>
#include <map>

namespace Extend
{

/**
    Waits for the end of the source programs' processes, at most one a program. Its table is guarded by the lock of the
    program states, so that a state and its process change together.
*/
class MonitorThread : public Platform::Thread
{
public:
    /** `endHandler` runs on this thread and under the lock, when the process is out of the table already. */
    MonitorThread(Platform::Mutex& statesLock, std::function<void(int appType)> endHandler);
    ~MonitorThread() override;

    /** Replaces the program's earlier process; null changes nothing. Any thread. */
    void watchProcess(int appType, Platform::ProcessHandle process);
    /** The process that is watched for the program, or null. Any thread. */
    Platform::ProcessHandle getProcess(int appType) const;

    /** Asks the thread to end and waits at most 200 ms; one that still runs is logged and left alone. */
    void stop();

private:
    void run() override;
    void handleEnd(int appType, const Platform::ProcessHandle& process);

    Platform::Mutex& lock;
    const std::function<void(int)> onEnded;
    std::map<int, Platform::ProcessHandle> watched;
    Platform::ProcessWaiter waiter;
};

} // namespace Extend
