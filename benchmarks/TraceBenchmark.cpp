// What a trace costs: a message that is posted and handled, and a round trip between two groups, without one and while one is
// written into a file.
#include "diagnostics/TraceSession.h"
#include "kernel/SystemEngine.h"

#include <benchmark/benchmark.h>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <thread>

namespace
{

using Kernel::Trace;

/** One that goes when it is closed. */
class TemporaryFile
{
public:
    TemporaryFile() { ::unlink(path.c_str()); }
    int get() const { return file.get(); }

private:
    std::string path = std::filesystem::temp_directory_path() / "headunit-trace-XXXXXX";
    const Platform::Descriptor file { ::mkstemp(path.data()) };
};

/** Written into a temporary file, every 100 ms as on a unit, as long as it lives. */
class Traced
{
public:
    explicit Traced(benchmark::State& benchmarkState)
        : state(benchmarkState)
        , writer([this] { run(); })
    {
        while (!Trace::isOn() && failure.empty())
            std::this_thread::yield();
    }
    ~Traced()
    {
        {
            const std::lock_guard guard(lock);
            over = true;
        }
        end.notify_one();
        writer.join();
        if (!failure.empty())
            state.SkipWithError(failure.c_str());
        state.counters["lost"] = static_cast<double>(summary.lost);
        state.counters["written"] = static_cast<double>(summary.events);
    }
    Traced(const Traced&) = delete;
    Traced& operator=(const Traced&) = delete;

private:
    void run()
    {
        constexpr std::chrono::seconds longest { 600 };
        constexpr std::chrono::milliseconds period { 100 };
        const TemporaryFile file;
        Diagnostics::TraceSession session;
        failure = session.begin(file.get(), longest);
        std::unique_lock guard(lock);
        while (!end.wait_for(guard, period, [this] { return over; }))
            session.poll(Platform::Clock::now());
        summary = session.stop();
    }

    benchmark::State& state;
    std::mutex lock;
    std::condition_variable end;
    bool over = false;
    std::string failure;
    Diagnostics::TraceSession::Summary summary;
    std::thread writer;
};

constexpr juce::int32 workMessage = 3;

/** Answers as often as it is told. */
class Answering : public Kernel::ComponentTask
{
public:
    explicit Answering(Kernel::ComponentId partnerToUse)
        : partner(partnerToUse)
    {
    }
    void handleMessage(juce::int32 id, juce::int32 left, juce::int32, const Kernel::Payload&) override
    {
        if (id != workMessage)
            return;
        if (left > 0)
            Kernel::postSystemMessage(partner, workMessage, left - 1, 0);
        else
            done.signal();
    }
    Platform::Event done;

private:
    const Kernel::ComponentId partner;
};

/** Two groups with one component each, whose threads run if they are to. */
class Groups
{
public:
    explicit Groups(bool running)
    {
        add("Near", near, Kernel::keyManagerId);
        add("Far", far, Kernel::dataManagerId);
        if (running)
            engine->start();
    }
    ~Groups()
    {
        engine->stop();
        engine->release();
        delete Kernel::SystemEngine::getExisting();
    }
    Kernel::TaskGroup& nearGroup() const { return *engine->findGroup("Near"); }

    juce::ReferenceCountedObjectPtr<Answering> near { new Answering(Kernel::dataManagerId) };
    juce::ReferenceCountedObjectPtr<Answering> far { new Answering(Kernel::keyManagerId) };

private:
    Kernel::SystemEngine* engine = Kernel::SystemEngine::getInstance();

    void add(const char* group, const juce::ReferenceCountedObjectPtr<Answering>& component, Kernel::ComponentId id)
    {
        constexpr int priority = 5;
        engine->createGroup(group, priority);
        component->assignId(id);
        engine->registerComponent(group, component.get());
    }
};

/** On one thread, so that nothing but the work counts. */
void handleMessage(benchmark::State& state)
{
    const Groups groups(false);
    auto& group = groups.nearGroup();
    for (auto unused : state)
    {
        Kernel::postSystemMessage(Kernel::keyManagerId, workMessage + 1, 0, 0);
        group.runPass();
    }
    state.SetItemsProcessed(state.iterations());
}

void roundTrips(benchmark::State& state)
{
    constexpr int trips = 500;
    const Groups groups(true);
    for (auto unused : state)
    {
        Kernel::postSystemMessage(Kernel::keyManagerId, workMessage, 2 * trips, 0);
        groups.near->done.wait();
    }
    state.SetItemsProcessed(state.iterations() * trips);
}

void noteNothing(benchmark::State& state)
{
    for (auto unused : state)
        Trace::note(Trace::Kind::job, 1, 2, 3);
}

/** What the thread does that takes it: a message, with its arrow, into the file. */
void writeMessages(benchmark::State& state)
{
    constexpr int portion = 1000;
    TemporaryFile file;
    Diagnostics::TraceFile document(file.get());
    const auto begin = Platform::Clock::now();
    Diagnostics::TraceEvents story(document, begin);
    Trace::begin();
    const Trace::Event event { begin,
                               Platform::Clock::now(),
                               Trace::here(),
                               { Kernel::keyManagerId, workMessage, 1, 2, -1 },
                               Trace::here().thread,
                               Trace::Kind::message };
    Trace::end();
    for (auto unused : state)
    {
        for (int i = 0; i < portion; ++i)
            story.add(event);
        document.flush();
        if (!document.getFailure().empty())
            return state.SkipWithError(document.getFailure().c_str());
    }
    state.SetItemsProcessed(state.iterations() * portion);
}

template <void work(benchmark::State&)>
void traced(benchmark::State& state)
{
    const Traced trace(state);
    work(state);
}

// No more than find room between two looks of the writer, so that none is lost: what is lost costs less.
constexpr int mostWaiting = 8'000;

BENCHMARK(writeMessages)->Name("Trace/write")->Iterations(200);
BENCHMARK(noteNothing)->Name("Trace/note/off");
BENCHMARK(traced<noteNothing>)->Name("Trace/note/on")->Iterations(mostWaiting);
BENCHMARK(handleMessage)->Name("Trace/message/off");
BENCHMARK(traced<handleMessage>)->Name("Trace/message/on")->Iterations(mostWaiting);
BENCHMARK(roundTrips)->Name("Trace/roundTrip/off")->UseRealTime();
BENCHMARK(traced<roundTrips>)->Name("Trace/roundTrip/on")->UseRealTime();

} // namespace
