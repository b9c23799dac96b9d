// The kernel's messages beside three other ways to hand the same payload to another thread.
#include "Allocations.h"
#include "kernel/SystemEngine.h"

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <benchmark/benchmark.h>
#include <caf/all.hpp>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace
{

struct Token : juce::ReferenceCountedObject
{
};

/** What every contender carries: the fields of a message and a counted reference. */
struct Item
{
    juce::int32 id, arg1, arg2;
    Kernel::Payload payload;
};

/** Counts arrivals on the receiving thread and wakes whoever waits for the last one. */
class Arrivals
{
public:
    void expect(std::int64_t count) { left.store(count); }
    void arrived()
    {
        if (left.fetch_sub(1, std::memory_order_acq_rel) == 1)
        {
            const std::lock_guard guard(lock);
            last.notify_one();
        }
    }
    void wait()
    {
        std::unique_lock guard(lock);
        last.wait(guard, [this] { return left.load() == 0; });
    }

private:
    std::atomic<std::int64_t> left { 0 };
    std::mutex lock;
    std::condition_variable last;
};

constexpr juce::int32 workMessage = 3;

class KernelReceiver : public Kernel::ComponentTask
{
public:
    explicit KernelReceiver(Kernel::ComponentId answerTo = Kernel::noComponent)
        : partner(answerTo)
    {
    }
    void handleMessage(juce::int32 id, juce::int32 roundsLeft, juce::int32, const Kernel::Payload& payload) override
    {
        if (id != workMessage)
            return;
        if (partner == Kernel::noComponent || roundsLeft == 0)
            arrivals.arrived();
        else
            Kernel::postSystemMessage(partner, workMessage, roundsLeft - 1, 0, payload);
    }
    Arrivals arrivals;

private:
    Kernel::ComponentId partner;
};

/** An engine of its own with running groups, one receiver in each. */
class RunningKernel
{
public:
    RunningKernel()
    {
        auto* engine = Kernel::SystemEngine::getInstance();
        add(*engine, "Near", near, Kernel::keyManagerId);
        add(*engine, "Far", far, Kernel::dataManagerId);
        engine->start();
    }
    ~RunningKernel()
    {
        Kernel::SystemEngine::getInstance()->stop();
        Kernel::SystemEngine::getInstance()->release();
        delete Kernel::SystemEngine::getExisting();
    }

    juce::ReferenceCountedObjectPtr<KernelReceiver> near { new KernelReceiver(Kernel::dataManagerId) };
    juce::ReferenceCountedObjectPtr<KernelReceiver> far { new KernelReceiver(Kernel::keyManagerId) };

private:
    static void add(Kernel::SystemEngine& engine, const char* group, KernelReceiver* receiver, Kernel::ComponentId id)
    {
        constexpr int priority = 5;
        engine.createGroup(group, priority);
        receiver->assignId(id);
        engine.registerComponent(group, receiver);
    }
};

/** The plain way: a deque under a mutex, a condition variable, one reader. */
class ConditionQueue
{
public:
    ConditionQueue()
        : reader([this] { run(); })
    {
    }
    ~ConditionQueue()
    {
        post({ -1, 0, 0, nullptr });
        reader.join();
    }
    void post(Item item)
    {
        {
            const std::lock_guard guard(lock);
            queue.push_back(std::move(item));
        }
        filled.notify_one();
    }
    Arrivals arrivals;

private:
    void run()
    {
        for (;;)
        {
            std::unique_lock guard(lock);
            filled.wait(guard, [this] { return !queue.empty(); });
            const Item item = std::move(queue.front());
            queue.pop_front();
            guard.unlock();
            if (item.id < 0)
                return;
            arrivals.arrived();
        }
    }

    std::mutex lock;
    std::condition_variable filled;
    std::deque<Item> queue;
    std::thread reader;
};

constexpr int batch = 10'000;

/** Times batches: the posters share the batch, and it is over when the last item has been taken. */
void measureRate(benchmark::State& state, Arrivals& arrivals, const std::function<void(const Kernel::Payload&)>& post)
{
    const auto posters = state.range(0);
    const Kernel::Payload payload = new Token;
    const auto postShare = [&]
    {
        for (std::int64_t i = 0; i < batch / posters; ++i)
            post(payload);
    };
    for ([[maybe_unused]] auto _ : state)
    {
        arrivals.expect(batch);
        std::vector<std::thread> others;
        for (std::int64_t i = 1; i < posters; ++i)
            others.emplace_back(postShare);
        postShare();
        for (auto& other : others)
            other.join();
        arrivals.wait();
    }
    state.SetItemsProcessed(state.iterations() * batch);
}

void kernelRate(benchmark::State& state)
{
    RunningKernel kernel;
    measureRate(state, kernel.near->arrivals,
                [](const Kernel::Payload& payload)
                { Kernel::postSystemMessage(Kernel::keyManagerId, workMessage, 0, 0, payload); });
}

void asioRate(benchmark::State& state)
{
    asio::io_context context;
    auto work = asio::make_work_guard(context);
    std::thread thread([&] { context.run(); });
    Arrivals arrivals;
    measureRate(
        state, arrivals,
        [&](const Kernel::Payload& payload) {
            asio::post(context, [&arrivals, item = Item { workMessage, 0, 0, payload }] { arrivals.arrived(); });
        });
    work.reset();
    thread.join();
}

void conditionQueueRate(benchmark::State& state)
{
    ConditionQueue queue;
    measureRate(state, queue.arrivals,
                [&](const Kernel::Payload& payload) {
                    queue.post({ workMessage, 0, 0, payload });
                });
}

} // namespace

// CAF asks what a message is made of; this one never leaves the process.
CAF_ALLOW_UNSAFE_MESSAGE_TYPE(Item)

namespace
{

void cafRate(benchmark::State& state)
{
    caf::actor_system_config config;
    caf::actor_system system(config);
    Arrivals arrivals;
    // Detached, as a group of the kernel is: an actor with a thread to itself.
    auto receiver = system.spawn<caf::detached>([&arrivals](caf::event_based_actor*) -> caf::behavior
                                                { return { [&arrivals](const Item&) { arrivals.arrived(); } }; });
    measureRate(state, arrivals,
                [&](const Kernel::Payload& payload) {
                    caf::anon_send(receiver, Item { workMessage, 0, 0, payload });
                });
    caf::anon_send_exit(receiver, caf::exit_reason::user_shutdown);
}

BENCHMARK(kernelRate)->Name("OneWay/kernel")->Arg(1)->Arg(4)->ArgName("posters")->UseRealTime();
BENCHMARK(asioRate)->Name("OneWay/asioPost")->Arg(1)->Arg(4)->ArgName("posters")->UseRealTime();
BENCHMARK(cafRate)->Name("OneWay/caf")->Arg(1)->Arg(4)->ArgName("posters")->UseRealTime();
BENCHMARK(conditionQueueRate)->Name("OneWay/conditionQueue")->Arg(1)->Arg(4)->ArgName("posters")->UseRealTime();

constexpr int roundTrips = 500;

/** A message from one group to another and back, again and again; counts what it allocates. */
void kernelRoundTrip(benchmark::State& state)
{
    RunningKernel kernel;
    const Kernel::Payload payload = new Token;
    const auto run = [&]
    {
        kernel.near->arrivals.expect(1);
        Kernel::postSystemMessage(Kernel::keyManagerId, workMessage, 2 * roundTrips, 0, payload);
        kernel.near->arrivals.wait();
    };
    run();
    const auto before = Benchmarks::allocationCount();
    for ([[maybe_unused]] auto _ : state)
        run();
    const auto trips = state.iterations() * roundTrips;
    state.counters["allocations/message"] =
        static_cast<double>(Benchmarks::allocationCount() - before) / static_cast<double>(2 * trips);
    state.SetItemsProcessed(trips);
}
BENCHMARK(kernelRoundTrip)->Name("RoundTrip/kernel")->UseRealTime();

/** The floor of the above: two threads that wake each other with condition variables and carry nothing. */
void conditionPingPong(benchmark::State& state)
{
    std::mutex lock;
    std::condition_variable turned[2];
    bool turnOf[2] = { false, false };
    bool stop = false;
    const auto waitFor = [&](int side)
    {
        std::unique_lock guard(lock);
        turned[side].wait(guard, [&] { return turnOf[side]; });
        turnOf[side] = false;
    };
    const auto giveTo = [&](int side)
    {
        {
            const std::lock_guard guard(lock);
            turnOf[side] = true;
        }
        turned[side].notify_one();
    };
    std::thread other(
        [&]
        {
            for (;;)
            {
                waitFor(1);
                if (stop)
                    return;
                giveTo(0);
            }
        });
    for ([[maybe_unused]] auto _ : state)
        for (int i = 0; i < roundTrips; ++i)
        {
            giveTo(1);
            waitFor(0);
        }
    stop = true;
    giveTo(1);
    other.join();
    state.SetItemsProcessed(state.iterations() * roundTrips);
}
BENCHMARK(conditionPingPong)->Name("RoundTrip/conditionPingPong")->UseRealTime();

} // namespace
