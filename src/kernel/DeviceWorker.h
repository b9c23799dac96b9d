#pragma once

#include <deque>
#include <functional>
#include <juce_core/juce_core.h>
#include <memory>
#include <mutex>

namespace Kernel
{

/**
    Does what one device is asked for, one job after the other, on a thread of its own. A device may be slow, or not
    answer at all: whoever wants something of it posts a job and goes on, so that keys, heartbeats and the exit wait for
    none. The unit has three: "WiredRemote", "DSP" and "Devices" (lines and video decoder).

    Workers of the process run from `startAll` to `stopAll`, also one that is made in between. What is posted before
    waits for the start; what is posted after the stop is dropped, as is what waits then.
*/
class DeviceWorker
{
public:
    using Job = std::function<void()>;

    explicit DeviceWorker(const juce::String& name);
    /** Waits for a job that is under way. */
    ~DeviceWorker();

    /**
        Behind the jobs that wait. Once `patience` of them wait, those with the same key are dropped for the new one: of
        what a device cannot keep up with only the newest counts, and no more than that waits. Any thread.
    */
    void post(int key, Job job);
    /** The job under way may end early. */
    bool isStopping() const { return stopping; }

    static constexpr std::size_t patience = 256;

    /** Message thread. */
    static void startAll();
    /**
        Also ends what waits for a device; a worker that goes on all the same is logged and left alone. Message thread.
    */
    static void stopAll();
    /** Does what waits on the caller's thread, a test in the threads' place; false when there was nothing. */
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
    std::deque<std::pair<int, Job>> jobs;
    std::atomic<bool> stopping { false };
    std::unique_ptr<WorkerThread> thread;
};

} // namespace Kernel
