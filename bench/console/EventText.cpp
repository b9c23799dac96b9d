#include "bench/console/EventText.h"

#include <algorithm>

namespace Bench
{

namespace
{

/** What events that come by themselves have in common; "" for all others. */
std::string regularKind(const Event& event)
{
    const auto has = [&](const char* part) { return event.text.find(part) != std::string::npos; };
    if (event.stream == "log")
        return has("received ACK") ? "acknowledgement" : has("EVENT_HEAT_BEAT") ? "heartbeat" : "";
    return event.stream == "frame EVENT_HEAT_BEAT" || event.text.starts_with("heartbeat") ? event.stream : "";
}

} // namespace

bool comesByItself(const Event& event)
{
    return !regularKind(event).empty();
}

Weight weightOf(const Event& event)
{
    const auto& [number, at, stream, text] = event;
    if (isDetail(event))
        return Weight::detail;
    if (comesByItself(event))
        return Weight::regular;
    if (stream == "dsp" && (text.ends_with(" dB") || text.ends_with(" silent")))
        return Weight::gain;
    const bool repeats = stream == "front" || stream == "mcu source" || stream == "frame EVENT_PGN_SEND_CAN";
    return repeats || stream.starts_with("sent ") ? Weight::echo : Weight::telling;
}

std::span<const Subject> allSubjects()
{
    static const Subject subjects[] = {
        { "pages", { "page", "front", "settled" } },
        { "mcu", { "mcu", "frame", "sent", "autotest" } },
        { "programs", { "program" } },
        { "sound", { "dsp" } },
        { "network", { "mfd", "n2k" } },
        { "remote", { "remote" } },
        { "log", { "log" } },
        { "unit", {} },
    };
    return subjects;
}

const Subject& subjectOf(const Event& event)
{
    const auto word = event.stream.substr(0, event.stream.find(' '));
    const auto subjects = allSubjects();
    const auto isIts = [&](const Subject& each) { return std::ranges::find(each.streams, word) != each.streams.end(); };
    const auto found = std::ranges::find_if(subjects, isIts);
    return found != subjects.end() ? *found : subjects.back();
}

const Subject* findSubject(const std::string& name)
{
    const auto subjects = allSubjects();
    const auto found = std::ranges::find(subjects, name, &Subject::name);
    return found != subjects.end() ? &*found : nullptr;
}

std::vector<Event> folded(const std::vector<Event>& events)
{
    struct Regular
    {
        std::string kind;
        std::size_t line; ///< its first
        int count;
    };
    std::vector<Event> lines;
    std::vector<Regular> since; // the last event that does not come by itself
    const auto finish = [&]
    {
        for (const auto& [kind, line, count] : since)
            if (count > 1)
                lines[line].text += (lines[line].text.empty() ? "× " : " × ") + std::to_string(count);
        since.clear();
    };
    for (const auto& event : events)
    {
        const auto kind = regularKind(event);
        const auto known = std::ranges::find(since, kind, &Regular::kind);
        if (kind.empty())
            finish();
        else if (known != since.end())
        {
            ++known->count;
            continue;
        }
        else
            since.push_back({ kind, lines.size(), 1 });
        lines.push_back(event);
    }
    finish();
    return lines;
}

} // namespace Bench
