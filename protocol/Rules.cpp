#include "protocol/Rules.h"

#include "EngineApi/ProgramTimes.h"

namespace Protocol
{

namespace
{

constexpr Rule table[] {
    { "P1",
      "It owns the name com.corvane. with its program's name behind it on the bus that HEADUNIT_BUS names, else on "
      "the session's, no other program's name, and offers its object before it owns the name." },
    { "P2", "It says hello (RMSG_APP_HELLO) as soon as it owns its name and com.corvane.AppMain has an owner, with its "
            "program type as arg1." },
    { "P3", "Its hello comes first: before it, it tells a new engine nothing else." },
    { "P4", "Told by a command line, of its start or in RMSG_COMMAND_LINE, that a page of its own comes to the front "
            "(pageShow, or sourceEnter with onTop), it asks for that page with RMSG_PAGE_REQUEST_SHOW within "
            "{requestDelayMs}, at its start after its hello." },
    { "P5", "It asks once for each such command line: not for a sourceEnter without onTop, not for pageHide or "
            "sourceExit, and not again and again while it waits." },
    { "P6",
      "It answers RMSG_PAGE_SHOW with RMSG_PAGE_SHOW_READY for the page that it was told, within {answerTimeoutMs}, "
      "each time, also when that page is on the screen already." },
    { "P7",
      "It never says RMSG_PAGE_SHOW_READY or RMSG_PAGE_HIDE_READY without being told to show or hide that page." },
    { "P8",
      "It answers RMSG_PAGE_HIDE with RMSG_PAGE_HIDE_READY for the page that it was told, within {answerTimeoutMs}, "
      "also when that page was never shown." },
    { "P9", "It answers RMSG_PAGE_COVERED with nothing, and has its page off the screen then." },
    { "P10", "It answers a pageHide for the page that it shows with RMSG_PAGE_TOP_SHOWN for that page within "
             "{reportTimeoutMs}, and leaves the page on the screen." },
    { "P11",
      "It answers each heartbeat (RMSG_HEARTBEAT) with RMSG_HEARTBEAT_REPLY and its program type as arg1, before the "
      "next one comes after {heartbeatPeriodMs}." },
    { "P12", "It ignores messages, keys, bundle keys and command lines that it does not know, and goes on as before." },
    { "P13", "It goes on answering while messages flood it: everything that it is told gets its answer, in order." },
    { "P14",
      "It answers RMSG_PAGE_NOTIFY with RMSG_STATE_TO_SYSTEM for the same page within {powerOffAnswerMs}, and goes "
      "on running." },
    { "P15", "Told to end (RMSG_SOURCE_STOP) it gives its name back, closes its windows and exits with status 0 within "
             "{closingPeriodMs}." },
    { "P16",
      "When com.corvane.AppMain gets another owner it says hello again, in the same process; when that engine says "
      "RMSG_ENGINE_STARTED it takes its page off the screen and says hello once more." },
    { "P17", "When the bus is gone it stays, connects again at the same address, owns its name and says hello again." },
    { "P18",
      "It plays on while the engine or the bus is away, and exits by itself with status 0 when {engineAwayMs} have "
      "passed without the engine." },
};

void replaceTime(std::string& text, const std::string& name, int milliseconds)
{
    constexpr int msPerSecond = 1000;
    const bool isWhole = milliseconds % msPerSecond == 0;
    const auto time =
        isWhole ? std::to_string(milliseconds / msPerSecond) + " s" : std::to_string(milliseconds) + " ms";
    const auto place = "{" + name + "}";
    for (auto at = text.find(place); at != std::string::npos; at = text.find(place))
        text.replace(at, place.size(), time);
}

} // namespace

std::span<const Rule> rules()
{
    return table;
}

std::string withTimes(const std::string& text)
{
    auto filled = text;
#define PROGRAM_TIME(name, milliseconds, meaning) replaceTime(filled, #name, milliseconds);
#include "EngineApi/ProgramTimes.def"
#undef PROGRAM_TIME
    return filled;
}

} // namespace Protocol
