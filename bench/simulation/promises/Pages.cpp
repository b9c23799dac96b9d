#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "bench/simulation/Promises.h"
#include "bench/text/Names.h"

namespace Simulation
{

namespace
{

/** Longer than every wait of the view manager. */
constexpr std::chrono::milliseconds longestWait { 1500 };
/** What the engine and the program need besides, in which simulated time hardly passes. */
constexpr std::chrono::milliseconds overhead { 50 };

/** The waits of the view manager that nobody has ended, as its log tells, and whether the program could have. */
class Waits
{
public:
    void watch(SimulatedUnit& unit)
    {
        unit.lookout.lines.add([this, &programs = unit.programs](const std::string& part, const std::string& line)
                               { onLine(part, line, programs); });
    }

    bool wasLostWithBus(int appType) const { return lostWithBus == appType; }

    /** After every step. */
    std::string look(const SimulatedPrograms& programs)
    {
        if (!programs.hasBus())
            lastBusless = Clock::now();
        for (const int appType : programs.unwell())
            lastUnwell[appType] = Clock::now();
        return broken;
    }

private:
    std::optional<Clock::time_point> lastBusless;
    std::map<int, Clock::time_point> lastUnwell; ///< of each program, as far as a step has found it so
    std::optional<int> lostWithBus;              ///< the program that its order did not reach
    std::string broken;

    void onLine(const std::string& part, const std::string& line, const SimulatedPrograms& programs)
    {
        constexpr std::string_view unsent = "postMessage error! dest: ", next = "Set NextShowPage : ";
        if (line.starts_with(unsent) && !programs.hasBus())
            lostWithBus = Bench::findApp(line.substr(unsent.size()));
        if (part != "Extend/ViewManager")
            return;
        if (line.starts_with(next))
            onWish(line.substr(next.size(), line.find(" |") - next.size()));
        else if (const auto end = line.find(" does not "); end != std::string::npos)
            if (const auto* page = pageOf(line.substr(0, end)))
                onWait(line, *page, programs);
    }

    static const Bench::PageInfo* pageOf(const std::string& name) { return Bench::pageInfo(Bench::findPage(name)); }

    void onWish(const std::string& name)
    {
        if (const auto* page = pageOf(name); page != nullptr && page->appType != lostWithBus)
            lostWithBus.reset();
    }

    void onWait(const std::string& line, const Bench::PageInfo& page, const SimulatedPrograms& programs)
    {
        // What it was told or has answered went with the bus.
        if (lastBusless && !isLong(*lastBusless))
            lostWithBus = page.appType;
        else if (couldAnswer(programs, page.appType) && broken.empty())
            broken = line;
    }

    static bool isLong(Clock::time_point since) { return Clock::now() - since > longestWait + overhead; }

    bool couldAnswer(const SimulatedPrograms& programs, int appType) const
    {
        const auto health = programs.health(appType);
        if (!health.answers)
            return false;
        if (health.gone && !isLong(*health.gone))
            return false;
        // What it was told meanwhile it does one after the other, each within the time of a habit.
        if (Clock::now() - *health.connected < 2 * programs.habits.answer + overhead)
            return false;
        const auto unwell = lastUnwell.find(appType);
        return unwell == lastUnwell.end() || unwell->second < *health.connected || isLong(unwell->second);
    }
};

/** What the scheduler, the view manager and the programs say is in front. */
std::string frontAgrees(SimulatedUnit& unit, const Since&)
{
    const int wanted = EngineApi::getFrontShow();
    const int shown = EngineApi::getCurrentPage();
    // A program that has died, or whose hello or order was lost, has its next chance when somebody asks for its page.
    const int appOfWanted = EngineApi::appTypeOfPage(wanted);
    if (!unit.programs.isConnected(appOfWanted) || only<Waits>().wasLostWithBus(appOfWanted))
        return {};
    if (wanted != shown)
        return std::string(Pubhead::pageName(wanted)) + " is to be in front, the view manager has " +
               Pubhead::pageName(shown);
    for (const int appType : unit.programs.running())
    {
        const int page = unit.programs.find(appType)->getShownPage();
        const bool inFront = EngineApi::appTypeOfPage(shown) == appType;
        if (page != (inFront ? shown : static_cast<int>(Pubhead::NUM_OF_PAGES)))
            return std::string(Pubhead::appTypeName(appType)) + " shows " + Pubhead::pageName(page) + ", in front is " +
                   Pubhead::pageName(shown);
    }
    return {};
}

std::string nobodyWaitedInVain(SimulatedUnit& unit, const Since&)
{
    return only<Waits>().look(unit.programs);
}

constexpr Promise all[] {
    { "what is in front agrees", frontAgrees, true },
    { "nobody waited in vain", nobodyWaitedInVain, false, watchWith<Waits> },
};

} // namespace

std::span<const Promise> pagePromises()
{
    return all;
}

} // namespace Simulation
