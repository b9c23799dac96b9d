#include "bench/console/Transcript.h"

#include "bench/text/Names.h"
#include "platform/channel/RemoteMessageIds.h"

#include <algorithm>
#include <array>
#include <map>
#include <sstream>
#include <string_view>

namespace Bench
{

namespace
{

using Lines = std::vector<std::string>;

constexpr const char* deviceStatus = "EVENT_DEVICE_STATUS";

/**
    What the unit sends by a clock alone falls between whatever else it sends, here in one run and there in the next:
    the heartbeat every 3 s; "ready" to the test equipment 2 s after the start, which is its first message there, as
    later it is an answer; and the request for the last memory, asked again every second until it is answered, of which
    the first stays. Nothing is repeated for the link's sake: the journal has a frame once however often it is
    transmitted, and the unit does not answer one that the microcontroller repeats. Messages for the boat's network are
    urgent: which one overtakes which depends on how far the link has come. At the start the radio's page tunes to where
    the tuner is, unless it comes before the tuner has said so.
*/
bool comesAnywhere(const std::string& line, const Lines& before)
{
    return line.starts_with("EVENT_PGN_SEND_CAN") || line == "EVENT_RADIO_INFO 05 00 27 7e" ||
           line.starts_with("EVENT_HEAT_BEAT") || line == "EVENT_AUTOTEST_INFO aa ee 00 07 82 02 23" ||
           (line == "EVENT_GET_LAST_MEMORY" && !before.empty() && before.back() == line);
}

/**
    The radio's program gets what the tuner says a moment before it has come and again afterwards, or only once: who is
    first is left to the machine.
*/
bool repeatsTunerState(const std::string& line, const Lines& before)
{
    static const auto batch = "message " + std::to_string(Platform::RMSG_RADIO_NOTIFY) + " 0 3 ";
    constexpr std::string_view band = "{key=33 ";
    const auto tellsState = [&](const std::string& each) { return each.find(band) != std::string::npos; };
    const auto last = std::find_if(before.rbegin(), before.rend(), tellsState);
    return line.starts_with(batch) && tellsState(line) && last != before.rend() &&
           last->ends_with(std::string_view(line).substr(line.find(band)));
}

/** What happens to a program or what it does itself, by its first word: nothing that it was sent. */
bool isOfProgramItself(const std::string& text)
{
    constexpr std::array<std::string_view, 11> words { "running",
                                                       "started",
                                                       "connected",
                                                       "gone",
                                                       "did",
                                                       "refused",
                                                       "plays",
                                                       "channel",
                                                       "code",
                                                       "bluetooth",
                                                       "window-message-failed" };
    return std::ranges::find(words, std::string_view(text).substr(0, text.find(' '))) != words.end();
}

std::string section(const std::string& name, const Lines& lines)
{
    std::string text = lines.empty() ? "" : "# " + name + "\n";
    for (const auto& line : lines)
        text += line + "\n";
    return text;
}

Lines linesOf(const std::string& text)
{
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

TranscriptSections TranscriptSections::all()
{
    const auto programs = allApps();
    return { true, true, { programs.begin(), programs.end() } };
}

std::string composeTranscript(const std::vector<Event>& events, const TranscriptSections& sections)
{
    struct OfProgram
    {
        Lines messages, pages;
    };
    std::map<std::string, Lines> toMcu;
    std::map<int, OfProgram> programs;
    for (const auto& [number, at, stream, text] : events)
    {
        const auto name = stream.substr(stream.find(' ') + 1);
        if (stream.starts_with("frame "))
        {
            const auto line = name + (text.empty() ? "" : " " + text);
            if (!comesAnywhere(line, toMcu[name]))
                toMcu[name].push_back(line);
        }
        else if (stream.starts_with("page "))
            programs[findApp(name)].pages.push_back(name + " " + text);
        else if (stream.starts_with("program ") && !isOfProgramItself(text))
        {
            auto& messages = programs[findApp(name)].messages;
            if (!repeatsTunerState(text, messages))
                messages.push_back(text);
        }
    }
    Lines frames;
    for (const auto& [name, lines] : toMcu)
        if (name == deviceStatus ? sections.devices : sections.mcu)
            frames.insert(frames.end(), lines.begin(), lines.end());
    auto transcript = section("to the microcontroller", frames);
    for (const auto& [appType, lines] : programs)
        if (sections.programs.contains(appType))
            transcript += section(std::string("to ") + Pubhead::appTypeName(appType), lines.messages) +
                          section(std::string("pages of ") + Pubhead::appTypeName(appType), lines.pages);
    return transcript;
}

std::string transcriptDifference(const std::string& kept, const std::string& seen)
{
    constexpr std::ptrdiff_t around = 3;
    const auto keptLines = linesOf(kept), seenLines = linesOf(seen);
    const auto [inKept, inSeen] = std::ranges::mismatch(keptLines, seenLines);
    if (inKept == keptLines.end() && inSeen == seenLines.end())
        return {};
    const auto at = inSeen - seenLines.begin();
    auto text = "line " + std::to_string(at + 1) + ", - kept, + seen:";
    const auto add = [&](const char* mark, auto from, auto end)
    {
        for (; from != end; ++from)
            text += mark + *from;
    };
    add("\n    ", inSeen - std::min(at, around), inSeen);
    add("\n  - ", inKept, inKept + std::min(keptLines.end() - inKept, around));
    add("\n  + ", inSeen, inSeen + std::min(seenLines.end() - inSeen, around));
    return text;
}

} // namespace Bench
