#include "bench/simulation/Run.h"

#include "bench/simulation/Promises.h"

namespace Simulation
{

namespace
{

using namespace std::chrono_literals;

/** Longer than anything that the engine waits for, one after the other. */
constexpr auto mostUnrest = 60s;
constexpr auto leastRest = 11s; ///< the bar with the favourites stays for 10
constexpr auto restStep = 100ms;

class Life
{
public:
    Life(SimulatedUnit& unitToUse, const World& worldToUse)
        : unit(unitToUse)
        , world(worldToUse)
        , begin(unit.scheduler.now())
    {
        since.begin = unit.journal.end();
        for (const auto& promise : promises())
            if (promise.watch != nullptr)
                promise.watch(unit);
    }

    Outcome live(Clock::duration length)
    {
        auto& scheduler = unit.scheduler;
        auto& chance = scheduler.getChance();
        comeToRest();
        while (outcome.broken.empty() && scheduler.now() - begin < length)
        {
            for (int i = 0; i < world.actionsToRest && outcome.broken.empty(); ++i)
            {
                const auto pause = chance.between(static_cast<int>(world.shortestPause.count()),
                                                  static_cast<int>(world.longestPause.count()));
                pass(std::chrono::milliseconds(pause));
                const auto& action = world.choose(chance);
                since.hadFaults = since.hadFaults || action.isFault;
                std::string done;
                unit.act([&] { done = action.run(unit, chance); });
                unit.journal.add("action", action.name + (done.empty() ? "" : " " + done));
            }
            unit.act([&] { endFaults(unit); });
            unit.journal.add("action", "rest");
            comeToRest();
        }
        outcome.steps = scheduler.steps();
        outcome.simulated = scheduler.now() - begin;
        return outcome;
    }

private:
    SimulatedUnit& unit;
    const World& world;
    const Clock::time_point begin;
    Since since;
    Outcome outcome;

    /** Lets the time pass, and looks after the promises of every step. */
    void pass(Clock::duration time)
    {
        unit.scheduler.runUntil(unit.scheduler.now() + time,
                                [this]
                                {
                                    check(false);
                                    return outcome.broken.empty();
                                });
    }

    void comeToRest()
    {
        const auto latest = unit.scheduler.now() + mostUnrest;
        pass(leastRest);
        for (auto quietSince = unit.scheduler.now(); unit.scheduler.now() - quietSince < quietTime;)
        {
            pass(restStep);
            if (!outcome.broken.empty())
                return;
            if (!isAtRest(unit))
                quietSince = unit.scheduler.now();
            if (unit.scheduler.now() > latest)
            {
                outcome.broken = "it comes to rest: it does not";
                return;
            }
        }
        check(true);
        since = { unit.journal.end(), false };
    }

    void check(bool atRest)
    {
        for (const auto& promise : promises())
            if (outcome.broken.empty() && (atRest || !promise.atRestOnly))
                if (const auto wrong = promise.check(unit, since); !wrong.empty())
                    outcome.broken = std::string(promise.name) + ": " + wrong;
    }
};

} // namespace

Outcome live(SimulatedUnit& unit, const World& world, Clock::duration length)
{
    return Life(unit, world).live(length);
}

} // namespace Simulation
