#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "bench/simulation/Promises.h"
#include "bench/text/Names.h"

namespace Simulation
{

namespace
{

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
    { "what is in front agrees", frontAgrees, true },
    { "nobody waited in vain", nobodyWaitedInVain, true },
};

} // namespace

std::span<const Promise> pagePromises()
{
    return all;
}

} // namespace Simulation
