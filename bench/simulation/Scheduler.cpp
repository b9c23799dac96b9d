#include "bench/simulation/Scheduler.h"

#include "bench/simulation/Allocations.h"
#include "bench/simulation/FiberStack.h"

#include <algorithm>
#include <boost/context/detail/exception.hpp>
#include <boost/context/fiber.hpp>
#include <boost/context/protected_fixedsize_stack.hpp>
#include <cassert>

namespace Simulation
{

namespace
{

Scheduler* only = nullptr;
/** The process's own, on which the scheduler runs. */
FiberStack ownStack;

/** In bytes, as the system keeps it. */
constexpr std::size_t longestName = 15;

} // namespace

struct Fiber
{
    enum class State { ready, waiting, ended };

    std::string name;
    State state = State::ready;
    std::optional<Clock::time_point> deadline; ///< of a wait
    Clock::time_point nextTurn;                ///< not before
    bool woken = false;                        ///< how the last wait ended
    std::vector<Fiber*> awaiting;              ///< its end
    int benchParts = 0;                        ///< that it is in
    FiberStack stack;
    boost::context::fiber context; ///< where it goes on
    boost::context::fiber outside; ///< where the scheduler goes on when it waits

    /** Goes on when the scheduler resumes it, or is unwound. */
    void leave()
    {
        struct Away
        {
            FiberStack& stack;
            ~Away() { stack.arriveFrom(ownStack); }
        };
        stack.leaveFor(ownStack);
        const Away away { stack };
        outside = std::move(outside).resume();
    }
};

namespace
{

/** Empty when it waits for another one, or has ended. */
std::optional<Clock::time_point> dueOf(const Fiber& fiber)
{
    if (fiber.state == Fiber::State::ready)
        return fiber.nextTurn;
    if (fiber.state == Fiber::State::waiting && fiber.deadline)
        return std::max(*fiber.deadline, fiber.nextTurn);
    return {};
}

} // namespace

Lane::Lane(std::string name)
    : fiber(Scheduler::get().start(std::move(name), [this] { run(); }))
{
}

void Lane::post(std::function<void()> piece)
{
    work.push_back(std::move(piece));
    Scheduler::get().wake(fiber);
}

bool Lane::isCurrent() const
{
    return Scheduler::get().current() == fiber;
}

void Lane::run()
{
    auto& scheduler = Scheduler::get();
    for (;;)
    {
        while (!work.empty())
        {
            const auto next = std::move(work.front());
            work.pop_front();
            busy = true;
            next();
            busy = false;
            if (!work.empty())
                scheduler.letOthersRun();
        }
        scheduler.wait({});
    }
}

Scheduler::Scheduler(std::uint64_t seed)
    : chance(seed)
{
    assert(only == nullptr);
    only = this;
    messages = std::make_unique<Lane>("message");
}

Scheduler::~Scheduler()
{
    // What a fiber holds on its stack is unwound.
    for (auto& fiber : fibers)
        if (fiber->outside) // it has begun, and has not ended
        {
            ownStack.leaveFor(fiber->stack);
            fiber->context = {};
            ownStack.arriveFrom(fiber->stack);
        }
    fibers.clear();
    only = nullptr;
}

Scheduler& Scheduler::get()
{
    return *only;
}

Fiber* Scheduler::start(std::string name, std::function<void()> body)
{
    const BenchPart part;
    auto fiber = std::make_unique<Fiber>();
    auto* started = fiber.get();
    started->name = std::move(name);
    // As large as a thread's needs to be here; what overflows it is a fault at once.
    constexpr std::size_t stackSize = 512 * 1024;
    boost::context::protected_fixedsize_stack allocator(stackSize);
    const auto memory = allocator.allocate();
    started->stack = { static_cast<const char*>(memory.sp) - memory.size, memory.size };
    const boost::context::preallocated place(memory.sp, memory.size, memory);
    started->context = boost::context::fiber(std::allocator_arg, place, allocator,
                                             [this, started, body = std::move(body)](boost::context::fiber&& from)
                                             {
                                                 started->stack.arriveFrom(ownStack);
                                                 started->outside = std::move(from);
                                                 run(*started, body);
                                                 started->stack.leaveFor(ownStack, true);
                                                 return std::move(started->outside);
                                             });
    fibers.push_back(std::move(fiber));
    return started;
}

void Scheduler::run(Fiber& fiber, const std::function<void()>& body)
{
    try
    {
        body();
    }
    catch (const boost::context::detail::forced_unwind&)
    {
        fiber.stack.leaveFor(ownStack, true);
        throw;
    }
    fiber.state = Fiber::State::ended;
    for (auto* other : fiber.awaiting)
        wake(other);
}

bool Scheduler::hasEnded(const Fiber* fiber) const
{
    return fiber == nullptr || fiber->state == Fiber::State::ended;
}

std::string Scheduler::currentName() const
{
    return running == nullptr ? "outside" : running->name;
}

Fiber* Scheduler::find(std::string_view name) const
{
    const auto found = std::find_if(fibers.rbegin(), fibers.rend(),
                                    [name](const auto& fiber)
                                    { return std::string_view(fiber->name).substr(0, longestName) == name; });
    return found == fibers.rend() ? nullptr : found->get();
}

bool Scheduler::wait(std::optional<Clock::time_point> deadline)
{
    auto* fiber = running;
    if (fiber == nullptr) // The bench asks something that the engine is still about to do.
    {
        runUntil(deadline.value_or(time), [] { return false; });
        return false;
    }
    fiber->state = Fiber::State::waiting;
    fiber->deadline = deadline;
    fiber->woken = false;
    fiber->leave();
    return fiber->woken;
}

void Scheduler::waitForEnd(Fiber* other, std::optional<Clock::time_point> deadline)
{
    other->awaiting.push_back(running);
    wait(deadline);
    std::erase(other->awaiting, running);
}

void Scheduler::wake(Fiber* fiber)
{
    if (fiber == nullptr || fiber->state != Fiber::State::waiting)
        return;
    fiber->state = Fiber::State::ready;
    fiber->woken = true;
}

void Scheduler::letOthersRun()
{
    if (auto* fiber = running)
        fiber->leave();
}

bool Scheduler::putOff(Fiber& fiber)
{
    if (load.delays == 0 || !chance.happens(load.delays))
        return false;
    fiber.nextTurn = time + std::chrono::milliseconds(chance.between(1, static_cast<int>(load.longestDelay.count())));
    return true;
}

void Scheduler::passOccasion()
{
    if (running != nullptr && !isBenchPart() && !messages->isCurrent() && putOff(*running))
        letOthersRun();
}

Scheduler::TimerState* Scheduler::findTimer(const Platform::MultiTimer& owner, int id) const
{
    const auto found =
        std::ranges::find_if(timers, [&](const auto& timer) { return timer->owner == &owner && timer->id == id; });
    return found == timers.end() ? nullptr : found->get();
}

void Scheduler::startTimer(Platform::MultiTimer& owner, int id, int intervalMs)
{
    const BenchPart part;
    stopTimer(owner, id);
    intervalMs = std::max(1, intervalMs);
    const RunningTimer timer { &owner, id, intervalMs, time + std::chrono::milliseconds(intervalMs), ++timerStarts };
    timers.push_back(std::make_unique<TimerState>(TimerState { timer }));
}

void Scheduler::stopTimer(const Platform::MultiTimer& owner, int id)
{
    std::erase_if(timers, [&](const auto& timer) { return timer->owner == &owner && timer->id == id; });
}

void Scheduler::stopTimers(const Platform::MultiTimer& owner)
{
    std::erase_if(timers, [&](const auto& timer) { return timer->owner == &owner; });
}

int Scheduler::timerInterval(const Platform::MultiTimer& owner, int id) const
{
    const auto* timer = findTimer(owner, id);
    return timer == nullptr ? 0 : timer->intervalMs;
}

void Scheduler::expire(TimerState& timer)
{
    // As the framework does: an expiry that has not been handled yet is the only one that waits.
    timer.posted = true;
    timer.due = time + std::chrono::milliseconds(timer.intervalMs);
    messages->post(
        [this, owner = timer.owner, id = timer.id, state = &timer]
        {
            if (auto* still = findTimer(*owner, id); still != nullptr && still == state)
            {
                still->posted = false;
                ++still->expiries;
                owner->timerCallback(id);
            }
        });
}

std::vector<Scheduler::RunningTimer> Scheduler::runningTimers() const
{
    std::vector<RunningTimer> each;
    for (const auto& timer : timers)
        each.push_back(*timer);
    return each;
}

std::optional<Scheduler::RunningTimer> Scheduler::timer(const Platform::MultiTimer& owner, int id) const
{
    const auto* found = findTimer(owner, id);
    return found == nullptr ? std::nullopt : std::optional<RunningTimer>(*found);
}

void Scheduler::resume(Fiber& fiber)
{
    fiber.state = Fiber::State::ready;
    running = &fiber;
    if (resumeObserver)
        resumeObserver(fiber.name);
    const int outside = exchangeBenchParts(fiber.benchParts);
    ownStack.leaveFor(fiber.stack);
    fiber.context = std::move(fiber.context).resume();
    ownStack.arriveFrom(fiber.stack);
    fiber.benchParts = exchangeBenchParts(outside);
    running = nullptr;
    putOff(fiber);
    if (!std::exchange(discounted, false))
        ++activityCount;
}

bool Scheduler::step()
{
    choices.clear();
    for (const auto& fiber : fibers)
        if (const auto due = dueOf(*fiber); due && *due <= time)
            choices.emplace_back(fiber.get());
    for (const auto& timer : timers)
        if (!timer->posted && timer->due <= time)
            choices.emplace_back(timer.get());
    for (const auto& source : sources)
        if (const auto due = source.due(); due && *due <= time)
            choices.emplace_back(&source);
    if (choices.empty())
        return false;
    ++stepsDone;
    const auto choice = choices[chance.below(choices.size())];
    if (auto* const* fiber = std::get_if<Fiber*>(&choice))
        resume(**fiber);
    else if (auto* const* timer = std::get_if<TimerState*>(&choice))
        expire(**timer);
    else
        std::get<const Source*>(choice)->run();
    return true;
}

std::optional<Clock::time_point> Scheduler::nextDue() const
{
    std::optional<Clock::time_point> next;
    const auto consider = [&](std::optional<Clock::time_point> due)
    {
        if (due && (!next || *due < *next))
            next = due;
    };
    for (const auto& fiber : fibers)
        consider(dueOf(*fiber));
    for (const auto& timer : timers)
        if (!timer->posted)
            consider(timer->due);
    for (const auto& source : sources)
        consider(source.due());
    return next;
}

void Scheduler::runSteps(int count, const std::function<bool()>& goesOn)
{
    while (count > 0)
    {
        if (step())
        {
            --count;
            if (!goesOn())
                return;
        }
        else if (const auto next = nextDue())
            time = std::max(time, *next);
        else
            break;
    }
}

void Scheduler::runUntil(Clock::time_point end, const std::function<bool()>& goesOn)
{
    for (;;)
    {
        while (step())
            if (!goesOn())
                return;
        const auto next = nextDue();
        if (!next || *next > end)
            break;
        time = std::max(time, *next);
    }
    time = std::max(time, end);
}

} // namespace Simulation
