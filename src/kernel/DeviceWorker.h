#pragma once

#include "kernel/Cause.h"
#include "kernel/Trace.h"

#include <deque>
#include <functional>
#include <juce_core/juce_core.h>
#include <memory>
#include <mutex>
#include <vector>

namespace Kernel
{

/**
    Carries out the jobs of one device, one after the other, on a thread of its own. A device may be slow or not answer
    at all, so callers post a job and go on; keys, heartbeats and the exit wait for no device. The unit has three
    workers: "WiredRemote", "DSP" and "Devices" (lines and video decoder). All workers of the process run from
    `startAll` to `stopAll`, also one that is made in between. Jobs posted earlier wait for the start; jobs that wait at
    the stop, or are posted after it, are dropped.
*/
class DeviceWorker
{
public:
    using Job = std::function<void()>;

    struct Status
    {
        juce::String name;
        std::size_t waiting = 0;
        bool busy = false;
        Platform::Clock::time_point since; ///< when the job under way began, or the last one ended
    };

    explicit DeviceWorker(const juce::String& name);
    /** Waits for a job that is under way. */
    ~DeviceWorker();

    /**
        Appends a job. Once `patience` jobs wait, those with the same key are dropped for the new one: of what a device
        cannot keep up with only the newest counts. Any thread.
    */
    void post(int key, Job job);
    /** The job under way may end early. */
    bool isStopping() const { return stopping; }

    static constexpr std::size_t patience = 256;

    /** Message thread. */
    static void startAll();
    /**
        Stops all workers, and ends calls that wait for a device. A worker that still runs is logged and left alone.
        Message thread.
    */
    static void stopAll();
    /** Any thread; it waits for no device. */
    static std::vector<Status> getStatus();
    /** For tests: carries out the waiting jobs on the caller's thread. False when there was none. */
    static bool drainAll();

    JUCE_DECLARE_NON_COPYABLE(DeviceWorker)

private:
    class WorkerThread;

    /** False when nothing waits. */
    bool doNext();
    void run();
    void requestStop();
    void waitForStop();

    std::mutex lock;
    struct Waiting
    {
        int key;
        Job job;
        Cause cause;
        Trace::Origin origin;
    };
    std::deque<Waiting> jobs;
    bool busy = false;
    Platform::Clock::time_point since;
    std::atomic<bool> stopping { false };
    std::unique_ptr<WorkerThread> thread;
};

} // namespace Kernel
