#include "bench/panel/EventList.h"

#include "bench/console/Script.h"
#include "bench/panel/RequestWords.h"
#include "bench/text/Names.h"
#include "platform/channel/RemoteMessageIds.h"

#include <algorithm>

namespace BenchPanel
{

namespace
{

using namespace std::chrono_literals;

/** What stands behind the first word of the stream: "mbFM" of "page mbFM". */
std::string subjectIn(const std::string& stream)
{
    const auto end = stream.find(' ');
    return end == std::string::npos ? "" : stream.substr(end + 1);
}

bool isFrame(const Event& event)
{
    return event.stream.starts_with("frame ") || event.stream.starts_with("sent ");
}

/** "EVENT_MUTE_STATE": "mute state". */
std::string plain(std::string name)
{
    for (const auto* prefix : { "EVENT_", "IND_", "REQ_", "RMSG_" })
        if (name.starts_with(prefix))
            name.erase(0, std::string(prefix).size());
    std::ranges::replace(name, '_', ' ');
    return lowerCase(name);
}

std::string frameWords(const std::string& name, const std::string& bytes)
{
    const auto parsed = parseBytes(parseLine(bytes).words).bytes;
    if (name == "IND_KEY" && parsed.size() == 2)
        return "key " + keyName(parsed[1]);
    if (name.starts_with("EVENT_SRC_SWITCH") && parsed.size() == 2)
        return plain(name) + " " + sourceName({ parsed[0], parsed[1] });
    return plain(name) + (bytes.empty() ? "" : " " + bytes);
}

/** Of a program, without what is only for who looks at bytes, which a click shows. */
std::string programWords(const std::string& program, const std::string& what)
{
    constexpr std::string_view message = "message ", commandLine = "command-line ", with = " with";
    auto words = what.substr(0, what.find(" {"));
    if (words.ends_with(with))
        words.resize(words.size() - with.size());
    if (words.starts_with(message))
        return program + " hears " +
               plain(Platform::remoteMessageName(std::atoi(words.c_str() + message.size())).toStdString());
    if (words.starts_with(commandLine))
        words.erase(0, commandLine.size());
    return program + " " + withTitles(words);
}

std::string pageWords(const std::string& page, const std::string& what)
{
    const auto* info = pageInfo(findPage(page));
    return (info != nullptr ? info->title : page) + (" " + what);
}

/** "|Harbour         |101.1           |": "Harbour | 101.1". */
std::string displayWords(const std::string& text)
{
    auto lines = juce::StringArray::fromTokens(juce::String::fromUTF8(text.c_str()), "|", "");
    lines.trim();
    lines.removeEmptyStrings();
    return lines.isEmpty() ? "display empty" : lines.joinIntoString(" | ").toStdString();
}

} // namespace

std::string wordsOf(const Event& event)
{
    const auto& text = event.text;
    const auto rest = subjectIn(event.stream);
    const auto& subject = subjectOf(event).name;
    if (event.stream == saidStream)
        return "> " + text;
    if (event.stream == "frame EVENT_HEAT_BEAT")
        return "heartbeat" + (text.find("×") != std::string::npos ? " " + text.substr(text.find("×")) : "");
    if (isFrame(event))
        return frameWords(rest, text);
    if (event.stream.starts_with("page "))
        return pageWords(rest, text);
    if (event.stream.starts_with("program "))
        return programWords(rest, text);
    if (event.stream == "remote display")
        return displayWords(text);
    const auto what = rest.empty() ? text : rest + (" " + text);
    return subject == "unit" && !event.stream.starts_with("gpio ") ? event.stream + " " + text : what;
}

EventList::EventList()
{
    for (const auto& subject : allSubjects())
        want(subject, subject.name != "log");
}

void EventList::take(const std::vector<Event>& newest)
{
    const auto first = next;
    for (const auto& event : newest)
    {
        if (event.number < first)
            continue;
        next = std::max(next, event.number + 1);
        // A late report is put in its place.
        events.insert(std::ranges::upper_bound(events, event.place(), {}, &Event::place), event);
    }
    while (events.size() > capacity)
        events.pop_front();
}

void EventList::want(const Subject& subject, bool isWanted)
{
    if (isWanted)
        wanted.insert(&subject);
    else
        wanted.erase(&subject);
}

bool EventList::isListed(const Event& event) const
{
    if (event.stream == saidStream)
        return true;
    // What another stream tells in words, or what is a detail, except for the log, would bury the rest.
    const bool isEcho = weightOf(event) == Weight::echo && !event.stream.starts_with("sent ");
    const bool isDetailed = weightOf(event) == Weight::detail && event.stream != "log";
    return !isEcho && !isDetailed && event.stream != "sent EVENT_PGN_FROM_CAN" && wants(subjectOf(event));
}

std::vector<EventList::Line> EventList::lines() const
{
    std::vector<Event> listed;
    for (auto event = events.rbegin(); event != events.rend() && listed.size() < mostLines; ++event)
        if (isListed(*event))
            listed.push_back(*event);
    std::ranges::reverse(listed);

    std::vector<Line> lines;
    int gains = 0; ///< of the last line
    auto from = events.empty() ? Clock::time_point() : events.front().at;
    if (!listed.empty())
        for (const auto& event : events)
            if (event.stream == saidStream && event.place() <= listed.front().place())
                from = event.at;
    for (auto& event : folded(listed))
    {
        const bool isGain = weightOf(event) == Weight::gain;
        gains = isGain ? gains + 1 : 0;
        if (gains > 1)
        {
            auto& text = lines.back().event.text;
            text = text.substr(0, text.find(", ")) + ", " + std::to_string(gains - 1) + " more";
            continue;
        }
        if (event.stream == saidStream)
            from = event.at;
        const auto after = event.at - from;
        lines.push_back({ std::move(event), after });
    }
    return lines;
}

const Event* EventList::find(std::uint64_t number) const
{
    const auto found = std::ranges::find(events, number, &Event::number);
    return found != events.end() ? &*found : nullptr;
}

EventList::Origin EventList::originOf(const Event& event) const
{
    constexpr auto sameMoment = 50ms;
    Origin origin;
    const auto* log = static_cast<const Event*>(nullptr);
    for (const auto& other : events)
    {
        const auto distance = std::chrono::abs(other.at - event.at);
        if (distance > sameMoment)
            continue;
        if (isFrame(other) && other.place() < event.place() && !isFrame(event))
            origin.frame = subjectIn(other.stream) + "  " + other.text;
        else if (other.stream == "log" && (log == nullptr || distance < std::chrono::abs(log->at - event.at)))
            log = &other;
    }
    if (log != nullptr)
        origin.log = log->text;
    return origin;
}

} // namespace BenchPanel
