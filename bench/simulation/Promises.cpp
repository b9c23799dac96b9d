#include "bench/simulation/Promises.h"

#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "EngineApi/SystemState.h"
#include "bench/text/Names.h"
#include "factory/ScheduleFactroy.h"
#include "kernel/SystemEngine.h"

#include <algorithm>

namespace Simulation
{

namespace
{

constexpr const char* groupNames[] { "GeneralHighGroup", "SystemGroup", "GeneralNormalGroup", "GeneralLowGroup" };

std::string runsOnce(SimulatedUnit& unit, const Since&)
{
    const auto twice = unit.programs.runningTwice();
    return twice.empty() ? "" : std::string(Pubhead::appTypeName(twice.front())) + " runs twice";
}

/** What the scheduler, the view manager and the programs say is in front. */
std::string frontAgrees(SimulatedUnit& unit, const Since&)
{
    const int wanted = EngineApi::getFrontShow();
    const int shown = EngineApi::getCurrentPage();
    // A program that has died, or whose hello was lost, has its next chance when somebody asks for its page.
    if (!unit.programs.isConnected(EngineApi::appTypeOfPage(wanted)))
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

std::string sourceAgrees(SimulatedUnit& unit, const Since&)
{
    const int page = EngineApi::getNormalSource();
    const auto [type, number] = Factory::ScheduleFactroy::getInstance()->mcuSourceForPage(page);
    const auto told = unit.mcu.state().source;
    const Bench::Source own { type, number };
    if (told && *told == own)
        return {};
    return std::string(Pubhead::pageName(page)) + " plays, the microcontroller has " +
           (told ? Bench::sourceName(*told) : "none") + " instead of " + Bench::sourceName(own);
}

/** The engine waits in vain only for a program that is not well. */
std::string nobodyWaitedInVain(SimulatedUnit& unit, const Since& since)
{
    if (since.hadFaults)
        return {};
    const auto inVain = unit.journal.find(since.begin, 1,
                                          [](const Bench::Event& event) {
                                              return event.stream == "log Extend/ViewManager" &&
                                                     event.text.find(" does not ") != std::string::npos;
                                          });
    return inVain.empty() ? "" : inVain.front().text;
}

constexpr Promise all[] {
    { "a program runs once", runsOnce, false },
    { "what is in front agrees", frontAgrees, true },
    { "the source agrees", sourceAgrees, true },
    { "nobody waited in vain", nobodyWaitedInVain, true },
};

} // namespace

std::span<const Promise> promises()
{
    return all;
}

bool isAtRest(const SimulatedUnit& unit)
{
    const auto& engine = *Kernel::SystemEngine::getInstance();
    return !EngineApi::isSystemBusy() && !EngineApi::isPageChanging() && unit.programs.areIdle() &&
           std::ranges::none_of(groupNames, [&](const char* name) { return engine.findGroup(name)->hasMessages(); });
}

} // namespace Simulation
