// The source programs.
#include "bench/console/Near.h"
#include "bench/console/Verb.h"
#include "bench/unit/Settings.h"

#include <algorithm>
#include <map>

namespace Bench
{

using namespace Pubhead;

namespace
{

/** An order to a program, which it takes if it runs. */
template <typename Function>
auto toProgram(Function function)
{
    return onUnit(
        [function](Unit& unit, const Arguments& given) -> std::string
        {
            const auto appType = findApp(given[0]);
            bool taken = false;
            if constexpr (std::is_invocable_v<Function, Programs&, int>)
                taken = std::invoke(function, unit.programs, appType);
            else
                taken = function(unit.programs, appType, given);
            return taken ? "" : unit.programs.whyRefused(appType);
        });
}

/** What only this program does, in the words behind the first. */
auto tell(int appType)
{
    return onUnit([appType](Unit& unit, const Arguments& given)
                  { return unit.programs.tell(appType, joined(std::span(given.line()).subspan(1))); });
}

/** A line of what a program does on order alone, without the word of its own verb. */
struct ProgramOrder
{
    int appType;
    std::string line;
};

std::span<const ProgramOrder> programOrders()
{
    static const ProgramOrder orders[] = {
        { AppMainMenu, "PAGE" },
        { AppMainMenu, "state" },
        { AppBluetooth, "connect [NAME...]" },
        { AppBluetooth, "disconnect" },
        { AppBluetooth, "call [NAME...]" },
        { AppBluetooth, "answer|hang-up|paired|audio|setup" },
        { AppBluetooth, "link open|closed" },
        { AppBluetooth, "pandora on|off" },
        { AppBluetooth, "signal|battery VALUE" },
        { AppiPod, "connect [analog|digital]" },
        { AppiPod, "path analog|digital" },
        { AppiPod, "disconnect|restart" },
        { AppiPod, "pandora on|off" },
        { AppSirius, "in|out|favourite" },
        { AppSirius, "channel|favourites VALUE" },
        { AppAntitheft, "CODE" },
        { AppRadio, "seek|step up|down" },
        { AppRadio, "tune|region|sensitivity VALUE" },
        { AppRadio, "reception on|off" },
        { AppUSB, "play VALUE" },
    };
    return orders;
}

/** Null for a program that does nothing on order. */
const Grammar* ordersOf(int appType)
{
    static const auto grammars = []
    {
        std::map<int, std::vector<ProgramOrder>> ofPrograms;
        for (const auto& order : programOrders())
            ofPrograms[order.appType].push_back(order);
        std::map<int, Grammar> made;
        for (const auto& [type, orders] : ofPrograms)
            made.emplace(type, Grammar(orders, "program " + lowerCase(appTypeName(type)).substr(3) + " do "));
        return made;
    }();
    const auto found = grammars.find(appType);
    return found != grammars.end() ? &found->second : nullptr;
}

std::string carryOut(Unit& unit, const Arguments& given)
{
    const auto appType = findApp(given[0]);
    const auto words = given.words(2);
    if (const auto* grammar = ordersOf(appType))
        if (const auto choice = grammar->choose(words); !choice.arguments)
            return !choice.error.empty() ? choice.error
                                         : appTypeName(appType) + std::string(" knows no '") + words[0] + "'." +
                                               nearText(words[0], grammar->completionsFor({}));
    return unit.programs.tell(appType, joined(words));
}

std::string changeStart(Unit& unit, const Arguments& given)
{
    const auto appType = findApp(given[0]);
    if (given[2] == "never")
        return unit.programFiles.remove(appType);
    return unit.programFiles.install(appType, given.time(2)); // none when it is well
}

std::string changeSetting(Unit& unit, const Arguments& given)
{
    const auto setting = *findSetting(given[0]);
    auto error = whyNoValue(setting, given[1]);
    return error.empty() ? unit.programs.changeSetting(setting, given[1]) : error;
}

int messageOf(const Arguments& given)
{
    return findMessage(given[2]).value_or(0);
}

std::string postToWindow(Unit& unit, const Arguments& given)
{
    const auto appType = findApp(given[0]);
    if (unit.engine().display().empty())
        return "nothing is drawn, so the engine has no window; program " + given[0] + " send goes over the bus";
    return unit.programs.sendWindowMessage(appType, messageOf(given), given.number(3), given.number(4))
               ? ""
               : unit.programs.whyRefused(appType);
}

/** Shows or stops the page that is named, else the one that the program is named by, else its first. */
std::string askForPage(Unit& unit, const Arguments& given)
{
    const auto appType = findApp(given[0]);
    const auto named = findPage(given[given.has(2) ? 2 : 0]);
    const auto page = named != NUM_OF_PAGES ? named : pageOfApp(appType)->page;
    if (pageInfo(page)->appType != appType)
        return std::string(appTypeName(appType)) + " has no page '" + given[2] + "'";
    if (given[1] == "show")
        return unit.programs.requestPage(page);
    const auto programs = unit.programs.running();
    const auto stack = unit.programs.pageStack();
    const auto found = programs.find(appType);
    if (found != programs.end() && found->second.source == NUM_OF_PAGES &&
        std::ranges::find(stack, page) == stack.end())
        return std::string(pageName(page)) + " is neither on the screen nor behind it, and plays nothing";
    return unit.programs.stopPage(page);
}

} // namespace

Words ordersBehind(const std::string& program, const Words& before)
{
    const auto* grammar = ordersOf(findApp(program));
    return grammar != nullptr ? grammar->completionsFor(before) : Words();
}

Verbs programVerbs()
{
    return {
        { "program PROGRAM show|stop [PAGE]", "Lets it ask for a page, or give it back.", onUnit(askForPage) },
        { "program PROGRAM crash", "Ends by a fault; one of --program is killed.", toProgram(&Programs::crash) },
        { "program PROGRAM hang", "Stops altogether.", toProgram(&Programs::hang) },
        { "program PROGRAM wake", "Ends that.", toProgram(&Programs::wakeUp) },
        { "program PROGRAM exit", "Ends properly; one of --program gets SIGTERM.", toProgram(&Programs::exit) },
        { "program PROGRAM silent [off]", "Takes everything and answers nothing.",
          toProgram([](Programs& programs, int app, auto& given) { return programs.setSilent(app, !given.has(2)); }) },
        { "program PROGRAM slow TIME|off", "Answers so much later.",
          toProgram([](Programs& programs, int app, auto& given) { return programs.setSlow(app, given.time(2)); }) },
        { "program PROGRAM start TIME|never|well", "It takes so long to start, or its file is missing, until well.",
          onUnit(changeStart) },
        { "program PROGRAM send MESSAGE [PARAMETER] [PARAMETER]", "Sends a message to the engine.",
          toProgram([](Programs& programs, int app, auto& given)
                    { return programs.sendMessage(app, messageOf(given), given.number(3), given.number(4)); }) },
        { "program PROGRAM window MESSAGE [PARAMETER] [PARAMETER]",
          "Posts one to the engine's window, which is there with a display.", onUnit(postToWindow) },
        { "program PROGRAM text LINE1 LINE2", "Writes on the wired remote.",
          toProgram([](Programs& programs, int app, auto& given)
                    { return programs.showOnRemote(app, given[2], given[3]); }) },
        { "program PROGRAM set SETTING VALUE", "Changes a setting.",
          toProgram([](Programs& programs, int app, auto& given)
                    { return programs.changeSetting(app, *findSetting(given[2]), given[3]); }) },
        { "program PROGRAM do WORD...", "What only this program does; it says what when a word makes no sense.",
          onUnit(carryOut) },
        { "menu PAGE", "A touch on a page of the main menu, which need not be in front.", tell(AppMainMenu) },
        { "set SETTING", "Its value, with range and meaning.",
          [](Console& console, auto& given) {
              return runLine(console, Words { "settings", given[0] });
          } },
        { "set SETTING VALUE", "A setting, as the setup program changes it.", onUnit(changeSetting) },
        { "bt connect [NAME...]", "A phone comes.", tell(AppBluetooth) },
        { "bt disconnect", "It goes.", tell(AppBluetooth) },
        { "bt call [NAME...]", "It rings.", tell(AppBluetooth) },
        { "bt answer", "The call is taken.", tell(AppBluetooth) },
        { "bt hang-up", "The call ends.", tell(AppBluetooth) },
        { "bt paired", "A phone has been paired.", tell(AppBluetooth) },
        { "bt link open|closed", "The way for data to the phone.", tell(AppBluetooth) },
        { "bt pandora on|off", "Pandora on the phone.", tell(AppBluetooth) },
        { "bt signal|battery VALUE", "What the phone says of itself.", tell(AppBluetooth) },
        { "bt audio|setup", "Asks for the page of its music, or of the phone.", tell(AppBluetooth) },
        { "ipod connect [analog|digital]", "An iPod comes.", tell(AppiPod) },
        { "ipod path analog|digital", "Its sound takes this way.", tell(AppiPod) },
        { "ipod disconnect", "It goes.", tell(AppiPod) },
        { "ipod pandora on|off", "Pandora on the iPod.", tell(AppiPod) },
        { "ipod restart", "Its program wants to be started anew.", tell(AppiPod) },
        { "satellite in|out", "The satellite tuner comes and goes.", tell(AppSirius) },
        { "satellite channel|favourites VALUE", "Tunes to a channel; how many favourites there are.", tell(AppSirius) },
        { "satellite favourite", "Opens the favourites.", tell(AppSirius) },
        { "unlock CODE", "The code of the locked unit; the right one is 1234.", tell(AppAntitheft) },
    };
}

} // namespace Bench
