#include "kernel/Trace.h"

#include "platform/base/Threads.h"

#include <algorithm>
#include <mutex>

namespace Kernel
{

namespace
{

/**
    A ring for many writers and one reader (D. Vyukov's bounded queue). A slot's turn says who has it: 2 r for the writer
    of round r, 2 r + 1 for the reader. A writer that is held up half-way holds up the reader only, and nobody with it.
*/
class Ring
{
public:
    void write(const Trace::Event& event)
    {
        auto position = next.load(std::memory_order_relaxed);
        for (;;)
        {
            auto& slot = slots[position % Trace::capacity];
            const auto free = writersTurn(position);
            const auto turn = slot.turn.load(std::memory_order_acquire);
            if (turn < free)
            {
                lost.fetch_add(1, std::memory_order_relaxed);
                return;
            }
            if (turn > free)
            {
                position = next.load(std::memory_order_relaxed);
                continue;
            }
            if (!next.compare_exchange_weak(position, position + 1, std::memory_order_relaxed))
                continue;
            slot.event = event;
            slot.turn.store(free + 1, std::memory_order_release);
            return;
        }
    }

    /** Null when nothing waits; it is kept until `release`. */
    const Trace::Event* front() const
    {
        const auto& slot = slots[read % Trace::capacity];
        return slot.turn.load(std::memory_order_acquire) == writersTurn(read) + 1 ? &slot.event : nullptr;
    }
    void release()
    {
        slots[read % Trace::capacity].turn.store(writersTurn(read) + 2, std::memory_order_release);
        ++read;
    }

    std::atomic<std::uint64_t> lost { 0 };

private:
    static std::uint64_t writersTurn(std::uint64_t position) { return 2 * (position / Trace::capacity); }

    struct alignas(64) Slot
    {
        std::atomic<std::uint64_t> turn { 0 };
        Trace::Event event;
    };
    static_assert(sizeof(Slot) == 64, "a cache line of its own for each event");

    std::array<Slot, Trace::capacity> slots {};
    alignas(64) std::atomic<std::uint64_t> next { 0 };
    alignas(64) std::uint64_t read = 0;
};

/** All zero, so it takes no memory before the first trace. It stays: a writer may be late. */
constinit Ring ring;

/** The threads that were seen, by their numbers less one. */
struct Threads
{
    struct Known
    {
        Platform::Thread::Id id;
        juce::String name;
    };
    std::mutex lock;
    std::vector<Known> all;

    static Threads& get()
    {
        static auto& only = *new Threads; // threads end late
        return only;
    }
};

/** More do not get a number of their own. */
constexpr std::size_t mostThreads = 256;

} // namespace

Trace::Thread Trace::thisThread()
{
    // In a simulated time many threads are one of the system's, so that the number alone does not do.
    thread_local constinit struct
    {
        Platform::Thread::Id id = nullptr;
        Thread number = noThread;
    } known;
    const auto id = Platform::Thread::currentId();
    if (known.number != noThread && known.id == id)
        return known.number;
    // The system gives the id of a thread that has ended to another one, which may have another name.
    const auto name = Platform::Thread::currentName();
    auto& threads = Threads::get();
    const std::lock_guard guard(threads.lock);
    auto found =
        std::ranges::find_if(threads.all, [&](const auto& each) { return each.id == id && each.name == name; });
    if (found == threads.all.end() && threads.all.size() < mostThreads)
        found = threads.all.insert(found, { id, threads.all.size() + 1 < mostThreads ? name : "other threads" });
    else if (found == threads.all.end())
        --found;
    known = { id, static_cast<Thread>(found - threads.all.begin() + 1) };
    return known.number;
}

juce::String Trace::threadName(Thread thread)
{
    auto& threads = Threads::get();
    const std::lock_guard guard(threads.lock);
    return thread == noThread || thread > threads.all.size() ? juce::String() : threads.all[thread - 1].name;
}

void Trace::record(const Event& event)
{
    ring.write(event);
}

bool Trace::begin()
{
    if (isOn())
        return false;
    while (ring.front() != nullptr) // of somebody who was late for the last trace
        ring.release();
    ring.lost = 0;
    on = true;
    return true;
}

void Trace::end()
{
    on = false;
}

void Trace::take(std::vector<Event>& events)
{
    for (std::size_t count = 0; count < capacity; ++count)
    {
        const auto* event = ring.front();
        if (event == nullptr)
            return;
        events.push_back(*event);
        ring.release();
    }
}

std::uint64_t Trace::countLost()
{
    return ring.lost.load(std::memory_order_relaxed);
}

} // namespace Kernel
