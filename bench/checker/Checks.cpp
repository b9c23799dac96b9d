#include "bench/checker/Checks.h"

#include "EngineApi/KeyCodes.h"
#include "EngineApi/ProgramTimes.h"
#include "platform/base/BundleKeys.h"

namespace Checker
{

using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;

namespace
{

constexpr milliseconds closing { closingPeriodMs };
constexpr milliseconds away { engineAwayMs };

Exchange::CommandLine shows(int page)
{
    return AppCommandLine::genCmdPageShow(page, false);
}

Exchange::CommandLine hides(int page)
{
    return AppCommandLine::genCmdPageHide(page, mbMainMenu);
}

// A program without a source is told of its page alone.

Exchange::CommandLine enters(const Exchange& with)
{
    return with.getSubject().isSource ? AppCommandLine::genCmdSourceEnter(with.page(), false, true)
                                      : shows(with.page());
}

Exchange::CommandLine entersBehind(const Exchange& with)
{
    return with.getSubject().isSource ? AppCommandLine::genCmdSourceEnter(with.page(), false, false)
                                      : hides(NUM_OF_PAGES);
}

Exchange::CommandLine leaves(const Exchange& with)
{
    return with.getSubject().isSource ? AppCommandLine::genCmdSourceExit(with.page(), mbMainMenu) : hides(NUM_OF_PAGES);
}

/** From its start to its page on the screen. */
bool comesToFront(Exchange& with)
{
    return with.begin(enters(with)) && with.isAnswered() && with.isShown(with.page()) && with.isWell("P11");
}

/** It has been asked for, and comes. */
bool comesAgain(Exchange& with, const Exchange::CommandLine& line)
{
    return with.command(line) && with.isAnswered() && with.isShown(line->getPage());
}

bool start(Exchange& with)
{
    return with.begin(entersBehind(with)) && with.hasEndpoint();
}

bool heartbeats(Exchange& with)
{
    constexpr int beats = 3;
    bool answered = with.begin(entersBehind(with));
    for (int i = 0; answered && i < beats; ++i)
        answered = with.tellAll(RMSG_HEARTBEAT) && with.isAnswered();
    return answered;
}

bool startForPage(Exchange& with)
{
    return comesToFront(with);
}

bool startWithout(Exchange& with)
{
    return with.begin(nullptr) && with.isWell("P11");
}

bool startBehindTheScenes(Exchange& with)
{
    return with.begin(hides(NUM_OF_PAGES)) && with.isWell("P11");
}

bool sourceBehind(Exchange& with)
{
    return with.begin(entersBehind(with)) && with.isWell("P11") && with.command(leaves(with)) && with.isWell("P11") &&
           with.command(entersBehind(with)) && with.isWell("P11");
}

bool secondStarts(Exchange& with)
{
    return with.begin(entersBehind(with)) && comesAgain(with, enters(with)) && comesAgain(with, shows(with.page())) &&
           with.command(entersBehind(with)) && with.isWell("P11") && comesAgain(with, enters(with)) &&
           with.command(leaves(with)) && with.isWell("P11") && with.isHidden(with.page()) &&
           comesAgain(with, enters(with)) && with.isWell("P11");
}

/** Longer than any answer of the engine takes. */
constexpr milliseconds late { requestDelayMs + answerTimeoutMs };

bool lateShow(Exchange& with)
{
    return with.begin(enters(with)) && with.isAnswered() && with.look(late, "P18") && with.isShown(with.page()) &&
           with.isWell("P11");
}

bool lateAnswerToHello(Exchange& with)
{
    return with.startBus() && with.engineComes() && with.startProgram(entersBehind(with)) && with.isThere("P1") &&
           with.helloIsDue("P2") && with.isAnswered() && with.look(late, "P18") && with.acknowledge() &&
           with.isWell("P18") && comesAgain(with, enters(with)) && with.isWell("P11");
}

bool everyPage(Exchange& with)
{
    bool answered = comesToFront(with);
    for (const int page : with.getSubject().pages)
        answered = answered && with.isShown(page) && with.isShown(page) && with.isHidden(page);
    return answered && with.isShown(with.page()) && with.isWell("P11");
}

bool hiddenTooEarly(Exchange& with)
{
    return with.begin(enters(with)) && with.isAnswered() && with.isHidden(with.page()) && with.isShown(with.page()) &&
           with.isHidden(with.page()) && with.isHidden(with.page()) && with.isShown(with.page()) && with.isWell("P11");
}

bool covered(Exchange& with)
{
    if (!comesToFront(with))
        return false;
    const bool drawn = with.becomesVisible(true);
    if (!(with.isHidden(with.page()) && with.tell(RMSG_PAGE_COVERED, with.page()) && with.isWell("P9")))
        return false;
    if (drawn && !with.becomesVisible(false))
        with.add("P9", "told RMSG_PAGE_COVERED, it left its page on the screen");
    return with.isShown(with.page());
}

bool givesWay(Exchange& with)
{
    if (!comesToFront(with))
        return false;
    const bool drawn = with.becomesVisible(true);
    if (!(with.command(hides(with.page())) && with.isAnswered() && with.isWell("P10")))
        return false;
    if (drawn && !with.becomesVisible(true))
        with.add("P10", "told pageHide, it took its page off the screen");
    return with.isHidden(with.page());
}

/** Numbers that no message, key, favourite or page has. */
constexpr int unknownMessage = 47110;
constexpr int unknownNumber = 4711;

int fillStrange(sd_bus_message* target)
{
    return sd_bus_message_append(target, "iiia{sv}", unknownMessage, unknownNumber, -1, 3, "nobody", "t",
                                 UINT64_C(1) << 40, "knows", "(id)", unknownNumber, 0.5, "this", "av", 1, "d", 0.5);
}

/** A command line that a later engine may send: all that is known today is in it, and more. */
struct FillRicherLine
{
    int page;
    int operator()(sd_bus_message* target) const
    {
        using namespace BundleKeys;
        return sd_bus_message_append(target, "iiia{sv}", RMSG_COMMAND_LINE, 0, 0, 2, "later", "x", INT64_C(-1),
                                     commandLineKey, "a{sv}", 5, typeKey, "s", "pageShow", pageKey, "i", page, "reason",
                                     "s", "key", flagKey, "b", 0, "zone", "y", 1);
    }
};

struct FillUnknownLine
{
    int page;
    int operator()(sd_bus_message* target) const
    {
        using namespace BundleKeys;
        return sd_bus_message_append(target, "iiia{sv}", RMSG_COMMAND_LINE, 0, 0, 1, commandLineKey, "a{sv}", 3,
                                     typeKey, "s", "pageBlink", pageKey, "i", page, onTopKey, "b", 1);
    }
};

bool unknownThings(Exchange& with)
{
    if (!comesToFront(with))
        return false;
    const bool asUsual = with.getFaults().empty();
    with.blame("P12");
    const bool told =
        with.tell(unknownMessage, unknownNumber, -1) && with.tell(-1) &&
        with.tellRaw(fillStrange, "message " + std::to_string(unknownMessage) + " with values of other types") &&
        with.tell(RMSG_KEY, unknownNumber) && with.tell(RMSG_FAVOURITE, unknownNumber, unknownNumber) &&
        with.tellRaw(FillUnknownLine { with.page() }, "RMSG_COMMAND_LINE pageBlink") && with.tell(RMSG_COMMAND_LINE) &&
        with.isWell("P12");
    return told && with.tellRaw(FillRicherLine { with.page() }, "RMSG_COMMAND_LINE pageShow with more keys") &&
           with.requestIsDue(with.page(), asUsual ? "P12" : "P4") && with.isAnswered() && with.isShown(with.page()) &&
           with.isWell("P12");
}

bool flooded(Exchange& with)
{
    constexpr int rounds = 400;
    if (!comesToFront(with))
        return false;
    with.flood("P13");
    bool told = true;
    for (int i = 0; told && i < rounds; ++i)
        told = with.tell(RMSG_KEY, KEY_NEXT) && with.tell(RMSG_PAGE_HIDE, with.page()) &&
               with.tell(RMSG_KEY, KEY_PRE) && with.tell(RMSG_PAGE_SHOW, with.page()) &&
               (!with.getSubject().hasHeartbeat || with.tellAll(RMSG_HEARTBEAT));
    return told && with.isAnswered() && with.isWell("P13");
}

bool powerOff(Exchange& with)
{
    return comesToFront(with) && with.tell(RMSG_PAGE_NOTIFY, with.page()) && with.isAnswered() && with.isWell("P14") &&
           with.isShown(with.page());
}

bool toldToEnd(Exchange& with)
{
    return comesToFront(with) && with.tell(RMSG_SOURCE_STOP) &&
           with.ends("P15", "told RMSG_SOURCE_STOP", milliseconds::zero(), closing);
}

bool toldToEndAtOnce(Exchange& with)
{
    return with.begin(enters(with)) && with.tell(RMSG_SOURCE_STOP) &&
           with.ends("P15", "told RMSG_SOURCE_STOP just after its hello", milliseconds::zero(), closing);
}

bool beforeEngine(Exchange& with)
{
    return with.startBus() && with.startProgram(enters(with)) && with.isThere("P1") && with.engineComes() &&
           with.helloIsDue("P2") && with.isAnswered() && with.acknowledge() && with.requestIsDue(with.page()) &&
           with.isAnswered() && with.isShown(with.page()) && with.isWell("P11");
}

/** A new engine is there, and has just owned its name. With `atOnce` it says so before the program can have said hello. */
bool isTakenOver(Exchange& with, bool atOnce)
{
    return with.helloIsDue("P16") && (atOnce || (with.isAnswered() && with.acknowledge())) &&
           with.tellAll(RMSG_ENGINE_STARTED) && with.helloIsDue("P16") && with.isAnswered() && with.acknowledge() &&
           with.isWell("P16");
}

bool engineRestarts(Exchange& with)
{
    if (!comesToFront(with))
        return false;
    const bool drawn = with.becomesVisible(true);
    if (!(with.engineGoes() && with.look(closing, "P18") && with.engineComes() && isTakenOver(with, false)))
        return false;
    if (drawn && !with.becomesVisible(false))
        with.add("P16", "told RMSG_ENGINE_STARTED, it left its page on the screen");
    return comesAgain(with, enters(with)) && with.isWell("P16") && with.engineGoes() && with.engineComes() &&
           isTakenOver(with, true) && comesAgain(with, enters(with)) && with.isWell("P16");
}

bool engineReplaced(Exchange& with)
{
    return comesToFront(with) && with.engineIsReplaced() && isTakenOver(with, false) && comesAgain(with, enters(with));
}

bool busRestarts(Exchange& with)
{
    return comesToFront(with) && with.stopBus() && with.look(closing, "P18") && with.startBus() && with.engineComes() &&
           with.isThere("P17") && with.helloIsDue("P17") && with.isAnswered() && with.acknowledge() &&
           with.isWell("P17") && with.isShown(with.page());
}

/** Timers of a program may be somewhat early. */
constexpr milliseconds tolerance { 500 };

bool engineStaysAway(Exchange& with)
{
    return comesToFront(with) && with.engineGoes() &&
           with.ends("P18", "without the engine", away - tolerance, away + closing);
}

bool busStaysAway(Exchange& with)
{
    return comesToFront(with) && with.stopBus() &&
           with.ends("P18", "without the bus", away - tolerance, away + closing);
}

constexpr Check table[] {
    { "is started, and says hello", start },
    { "hears heartbeats", heartbeats },
    { "is started for its page", startForPage },
    { "is started without a command line", startWithout },
    { "is started behind the scenes", startBehindTheScenes },
    { "has its source entered and left behind another page", sourceBehind },
    { "is started a second time", secondStarts },
    { "is there before the engine", beforeEngine },
    { "has its hello answered late", lateAnswerToHello },
    { "is told late to show its page", lateShow },
    { "is told to show a page that is shown, and its other pages", everyPage },
    { "is told to hide a page that is not shown", hiddenTooEarly },
    { "is covered", covered },
    { "gives way to another page", givesWay },
    { "hears what it does not know", unknownThings },
    { "is flooded with messages", flooded },
    { "is asked before the unit goes off", powerOff },
    { "is told to end while its page is shown", toldToEnd },
    { "is told to end while it starts", toldToEndAtOnce },
    { "meets a new engine", engineRestarts },
    { "meets an engine that takes another's place", engineReplaced },
    { "meets a new bus", busRestarts },
    { "is left alone by the engine", engineStaysAway },
    { "is left alone by the bus", busStaysAway },
};

} // namespace

std::span<const Check> allChecks()
{
    return table;
}

} // namespace Checker
