#include "kernel/DeviceWorker.h"

#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/base/Threads.h"
#include "platform/devices/Lines.h"
#include "platform/record/Recorder.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Kernel
{

namespace
{

constexpr Platform::Log logger { "kernel/DeviceWorker", "DeviceWorker" };

Platform::Counter jobsSuperseded { "devices.jobs-superseded",
                                   "jobs for a slow device that a newer one took the place of" };

/** Longer than the kernel's drivers hold a call; simulated devices end theirs at once. */
constexpr int stopTimeoutMs = 1500;

/** The workers of the process. Their number is known early, so a vector does. */
struct Workers
{
    std::mutex lock;
    std::vector<DeviceWorker*> all;
    bool running = false;

    static Workers& get()
    {
        static auto& instance = *new Workers; // workers of the whole process are deleted late
        return instance;
    }
};

} // namespace

class DeviceWorker::WorkerThread : public Platform::Thread
{
public:
    WorkerThread(const juce::String& threadName, DeviceWorker& owningWorker)
        : Platform::Thread(threadName)
        , worker(owningWorker)
    {
    }

    void run() override { worker.run(); }

private:
    DeviceWorker& worker;
};

DeviceWorker::DeviceWorker(const juce::String& name)
    : thread(std::make_unique<WorkerThread>(name, *this))
{
    auto& workers = Workers::get();
    const std::lock_guard guard(workers.lock);
    workers.all.push_back(this);
    if (workers.running)
        thread->startThread();
}

DeviceWorker::~DeviceWorker()
{
    {
        auto& workers = Workers::get();
        const std::lock_guard guard(workers.lock);
        std::erase(workers.all, this);
    }
    requestStop();
    thread->waitForThreadToExit(-1);
}

void DeviceWorker::post(int key, Job job)
{
    {
        const Platform::RecordedSection section(Platform::Step::jobPosted, thread->getThreadName(), key);
        const std::lock_guard guard(lock);
        if (stopping)
            return;
        if (jobs.size() >= patience)
            jobsSuperseded += std::erase_if(jobs, [key](const auto& waiting) { return waiting.key == key; });
        jobs.push_back({ key, std::move(job), Cause::current(), Trace::here() });
    }
    thread->notify();
}

bool DeviceWorker::doNext()
{
    Waiting next;
    {
        const std::lock_guard guard(lock);
        if (jobs.empty())
            return false;
    }
    {
        const Platform::RecordedSection section(Platform::Step::jobBegun);
        const std::lock_guard guard(lock);
        if (jobs.empty())
            return false;
        next = std::move(jobs.front());
        jobs.pop_front();
        busy = true;
        since = Platform::Clock::now();
    }
    {
        const CauseScope cause(next.cause);
        next.job();
    }
    Trace::span(next.origin, since, Trace::Kind::job, next.key);
    const std::lock_guard guard(lock);
    busy = false;
    since = Platform::Clock::now();
    return true;
}

void DeviceWorker::run()
{
    // A job that comes between the look and the wait has notified: the wait ends at once.
    while (!stopping)
        if (!doNext())
            thread->wait(-1);
}

void DeviceWorker::requestStop()
{
    {
        const std::lock_guard guard(lock);
        stopping = true;
        jobs.clear();
    }
    thread->signalThreadShouldExit();
    thread->notify();
}

void DeviceWorker::waitForStop()
{
    if (!Platform::awaitEnd(*thread, stopTimeoutMs))
        logger().error("%s does not stop, its device does not answer", thread->getThreadName().toRawUTF8());
}

void DeviceWorker::startAll()
{
    auto& workers = Workers::get();
    const std::lock_guard guard(workers.lock);
    workers.running = true;
    for (auto* worker : workers.all)
        worker->thread->startThread();
}

void DeviceWorker::stopAll()
{
    auto& workers = Workers::get();
    const std::lock_guard guard(workers.lock);
    workers.running = false;
    for (auto* worker : workers.all)
        worker->requestStop();
    Platform::endDeviceWaits();
    for (auto* worker : workers.all)
        worker->waitForStop();
}

std::vector<DeviceWorker::Status> DeviceWorker::getStatus()
{
    const std::lock_guard guard(Workers::get().lock);
    std::vector<Status> all;
    for (auto* worker : Workers::get().all)
    {
        const std::lock_guard workerGuard(worker->lock);
        all.push_back({ worker->thread->getThreadName(), worker->jobs.size(), worker->busy, worker->since });
    }
    return all;
}

bool DeviceWorker::drainAll()
{
    std::vector<DeviceWorker*> workers;
    {
        const std::lock_guard guard(Workers::get().lock);
        workers = Workers::get().all;
    }
    bool found = false;
    for (auto* worker : workers)
        while (worker->doNext())
            found = true;
    return found;
}

} // namespace Kernel
