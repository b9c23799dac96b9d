#include "bench/console/ExpectLines.h"

#include "bench/console/Near.h"
#include "bench/mcu/McuFrame.h"
#include "bench/network/NetworkDisplay.h"

#include <algorithm>

namespace Bench
{

namespace
{

using Found = std::pair<std::string, std::string>;

constexpr auto whole = ExpectLine::whole;
constexpr auto part = ExpectLine::part;
constexpr auto state = ExpectLine::state;

Found findSourceOf(const Arguments& given)
{
    return { "mcu source", sourceName(given.source(0)) };
}

Found findFrame(const Arguments& given)
{
    return { "frame " + unitCommandName(commandOfName(given[0])), given.text(1) };
}

Found findTransmission(const Arguments& given)
{
    return { "sent " + given[0], given.text(1) };
}

std::string pageOf(const Arguments& given)
{
    return Pubhead::pageName(findPage(given[0]));
}

Found findPageChange(const Arguments& given)
{
    return { "page " + pageOf(given), given[1] };
}

Found findProgramEvent(const Arguments& given)
{
    return { std::string("program ") + Pubhead::appTypeName(findApp(given[0])), given.text(1) };
}

/** A text of the unit with its item; the text may be left out. */
Found findTestText(const Arguments& given)
{
    return { "autotest", "text " + given[0] + " \"" + (given.has(1) ? given.text(1) + "\"" : "") };
}

Found findLine(const Arguments& given)
{
    return { "gpio " + given[0], given[1] };
}

Found findDisplay(const Arguments& given)
{
    return { "remote display", given.text(0) };
}

Found findMessage(const Arguments& given)
{
    return NetworkDisplay::streamAndText(given.text(0));
}

} // namespace

std::span<const ExpectLine> allExpectLines()
{
    static const ExpectLine lines[] = {
        { "mcu source SOURCE [NUMBER]",
          "The microcontroller has this source: the unit has asked for it, or confirmed it.", "", whole, findSourceOf },
        { "mcu agreed", "Both sides agree on a source.", "mcu agreed" },
        { "mcu frame FRAME [BYTE...]", "A frame of the unit, with these data or any.", "", whole, findFrame },
        { "mcu sent FRAME [BYTE...]", "The transmission of a frame to it.", "", whole, findTransmission },
        { "mcu link TEXT...", "The link: silent, back, a fault, a frame given up.", "mcu link", part },
        { "mcu power on|off", "The front panel's power key has gone out, as the unit asked for it.", "mcu power" },
        { "mcu ready-for-power-off", "The unit is ready.", "mcu ready-for-power-off" },
        { "power cut", "Its power is gone, as the microcontroller cuts it.", "power" },
        { "mcu device-id TEXT...", "The unit sets it: \"12 34 56\".", "mcu device-id" },
        { "mcu tuner TEXT...", "Where the tuner is: FM 101.10.", "mcu tuner" },
        { "mcu hold [TEXT...]", "A held key is released: \"20 sent, 0 skipped\".", "mcu hold", part },
        { "mcu flood [TEXT...]", "The end of a flood of keys, the same.", "mcu flood", part },
        { "page PAGE shown|hidden|covered|confirmed", "What happens to a page.", "", whole, findPageChange },
        { "page PAGE in-front", "It is the one in front; a state, which is not used up.", "", state,
          [](auto& given) {
              return Found { Expectations::frontStream, pageOf(given) };
          } },
        { "page PAGE settled", "The same, and the engine, too, knows that it is there.", "", state,
          [](auto& given) {
              return Found { Expectations::settledStream, pageOf(given) };
          } },
        { "program PROGRAM running|connected|gone", "What becomes of a program.", "", whole, findProgramEvent },
        { "program PROGRAM TEXT...", "What it was told, or says of itself: key 42.", "", part, findProgramEvent },
        { "log TEXT", "A line of the engine's log with this in it.", "log", part },
        { "engine started|ended|exit|signal|TEXT...",
          "The engine's process: started, ended, and of the bench's own engine how: exit 0, signal 9.", "engine" },
        { "bus started|stopped", "The message bus.", "bus" },
        { "update TEXT...", "What an update program says: \"the unit is down\".", "update", part },
        { "gpio LINE 0|1", "The unit sets a line.", "", whole, findLine },
        { "dsp TEXT...", "The DSP: boot, \"source tuner\", \"mute on\", a gain.", "dsp", part },
        { "dsp write TEXT...", "A word that is written: equaliser 1 500 Hz +4.0 dB.", "dsp write", part },
        { "remote plugged|unplugged", "The wired remote comes and goes.", "remote", part },
        { "remote dimmer [TEXT...]", "Its light: \"A 15\".", "remote dimmer", part },
        { "remote TEXT...", "What it shows.", "", part, findDisplay },
        { "autotest [ready|entered|left|TEXT...]",
          "A message of the unit to the test equipment: \"key 12 done\", \"key 5 refused\", \"source 10 1\", \"volume "
          "20\", \"states trigger spare\", \"states none\", \"id ABC123456\"; \"message 06 04\" for one without a "
          "meaning here, damaged for one with a wrong sum, which is not acknowledged.",
          "autotest" },
        { "autotest text ITEM", "One of its texts, whichever.", "", part, findTestText },
        { "autotest text ITEM TEXT...", "This one.", "", whole, findTestText },
        { "mfd sent [TEXT...]", "A message to the unit, whoever on the network sends it.", "mfd sent", part },
        { "mfd flood [TEXT...]", "The end of a flood: \"600 sent, 0 skipped\".", "mfd flood", part },
        { "mfd TEXT...",
          "What the unit tells the display, in words; what begins with \"zone 1\" or \"zone 2\" is a stream of its "
          "own.",
          "", part, findMessage },
        { "n2k TEXT...", "The lines of the network: played, a reader dropped, a line refused.", "n2k", part },
    };
    return lines;
}

const Grammar& expectGrammar()
{
    static const Grammar grammar(allExpectLines(), "expect ");
    return grammar;
}

ParsedExpectation parseExpectation(const Words& words)
{
    auto choice = expectGrammar().choose(words);
    if (!choice.arguments && choice.error.empty())
        return { {},
                 "what is to be expected? See help expect." +
                     (words.empty() ? "" : nearText(words.front(), expectGrammar().completionsFor({}))) };
    if (!choice.arguments)
        return { {}, choice.error };
    const auto& line = allExpectLines()[choice.pattern];
    const auto ofStream = std::ranges::count(line.stream, ' ') + 1;
    auto [stream, text] =
        line.find != nullptr
            ? line.find(*choice.arguments)
            : Found { line.stream, joined(std::span(words).subspan(static_cast<std::size_t>(ofStream))) };
    return { { std::move(stream), std::move(text), line.match == part, line.match == state, joined(words) }, {} };
}

} // namespace Bench
