#include "bench/simulation/Life.h"

#include "bench/simulation/Hand.h"
#include "bench/simulation/Promises.h"

namespace Simulation
{

namespace
{

using namespace std::chrono_literals;

/** Longer than anything that the engine waits for, one after the other. */
constexpr auto mostUnrest = 60s;
constexpr auto leastRest = 14s; ///< the bar with the favourites stays for 10, after a key held for 3
constexpr auto restStep = 100ms;
/** After it the microcontroller cuts the power of a unit that has not said that it is ready. */
constexpr auto longestPowerOff = 20s;
constexpr int mostStepsIntoSomething = 40;

class Life
{
public:
    Life(SimulatedUnit& unitToUse, const Witness& witnessToTell)
        : unit(unitToUse)
        , witness(witnessToTell)
        , begin(unit.scheduler.now())
    {
        since.begin = unit.journal.end();
        for (const auto& promise : promises())
            if (promise.watch != nullptr)
                promise.watch(unit);
    }

    bool isOver() const { return outcome.cut || !outcome.broken.empty(); }
    Clock::duration lived() const { return unit.scheduler.now() - begin; }

    void perform(const Deed& deed)
    {
        if (deed.line == rest)
            return comeToRest();
        witness(deed);
        pass(deed.pause);
        if (isOver())
            return;
        unit.scheduler.runSteps(deed.steps, [this] { return goesOn(); });
        if (isOver() || deed.line.empty())
            return;
        unit.journal.add("action", deed.line);
        if (const auto error = carryOut(unit, deed.line); !error.empty())
            outcome.broken = error;
        if (deed.line == powerOff && !since.powerOffAt)
            since.powerOffAt = unit.scheduler.now();
        outcome.cut = deed.line == powerCut;
    }

    void endFaults()
    {
        for (const auto& line : endsOfFaults(unit))
            if (!isOver())
                perform({ .line = line });
    }

    void comeToRest()
    {
        witness({ .pause = leastRest + quietTime, .line = rest });
        const auto restBegin = unit.scheduler.now();
        unit.journal.add("action", "rest");
        pass(leastRest);
        for (auto quietSince = unit.scheduler.now(); !isOver() && unit.scheduler.now() - quietSince < quietTime;)
        {
            pass(restStep);
            if (!isAtRest(unit))
                quietSince = unit.scheduler.now();
            if (unit.scheduler.now() - restBegin > mostUnrest && outcome.broken.empty())
                outcome.broken = "it comes to rest: it does not";
        }
        check(true);
        since = { .begin = unit.journal.end() };
    }

    bool goesOff() const { return since.powerOffAt.has_value(); }
    bool isOff() const
    {
        return goesOff() &&
               (unit.mcu.isUnitReadyForPowerOff() || unit.scheduler.now() - *since.powerOffAt > longestPowerOff);
    }

    Outcome end()
    {
        outcome.steps = unit.scheduler.steps();
        outcome.simulated = lived();
        return outcome;
    }

private:
    SimulatedUnit& unit;
    const Witness& witness;
    const Clock::time_point begin;
    Since since;
    Outcome outcome;

    /** Lets the time pass, and looks after the promises of every step. */
    void pass(Clock::duration time)
    {
        if (isOver())
            return;
        unit.scheduler.runUntil(unit.scheduler.now() + time, [this] { return goesOn(); });
    }

    bool goesOn()
    {
        check(false);
        return outcome.broken.empty();
    }

    void check(bool atRest)
    {
        for (const auto& promise : promises())
            if (outcome.broken.empty() && (atRest || !promise.atRestOnly))
                if (const auto wrong = promise.check(unit, since); !wrong.empty())
                    outcome.broken = std::string(promise.name) + ": " + wrong;
    }
};

/** The next thing that happens, some of them in the middle of something else. */
Deed choose(const SimulatedUnit& unit, const World& world, Chance& chance)
{
    constexpr int inTheMiddleOf1000 = 300;
    const auto pause =
        chance.between(static_cast<int>(world.shortestPause.count()), static_cast<int>(world.longestPause.count()));
    const auto line = world.choose(chance).choose(unit, chance);
    const bool inTheMiddle = line == powerCut || chance.happens(inTheMiddleOf1000);
    return { std::chrono::milliseconds(pause), inTheMiddle ? chance.between(1, mostStepsIntoSomething) : 0, line };
}

} // namespace

Outcome live(SimulatedUnit& unit, const World& world, Chance& chance, Clock::duration length, const Witness& witness)
{
    Life life(unit, witness);
    // Not everybody waits until the unit has started.
    constexpr int patientOf1000 = 700;
    if (chance.happens(patientOf1000))
        life.comeToRest();
    while (!life.isOver() && life.lived() < length)
    {
        for (int i = 0; i < world.actionsToRest && !life.isOver(); ++i)
            life.perform(life.isOff() ? Deed { std::chrono::milliseconds(chance.between(0, 400)), 0, powerCut }
                                      : choose(unit, world, chance));
        if (life.goesOff() || life.isOver())
            continue;
        life.endFaults();
        life.comeToRest();
    }
    return life.end();
}

Outcome live(SimulatedUnit& unit, const Plan& plan, const Witness& witness)
{
    Life life(unit, witness);
    for (const auto& deed : plan)
        if (!life.isOver())
            life.perform(deed);
    if (!life.isOver() && (plan.empty() || plan.back().line != rest))
        life.comeToRest();
    return life.end();
}

} // namespace Simulation
