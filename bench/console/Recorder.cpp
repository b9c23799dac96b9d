#include "bench/console/Recorder.h"

#include "bench/console/Expect.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <utility>

namespace Bench
{

namespace
{

constexpr const char* header =
    "# What a person did, as `record` wrote it: `replay` does it again, and no other page or "
    "source may come.\n";

/** The line that expects what the event tells; "" when a scenario does not mind. */
std::string expectationOf(const Event& event)
{
    if (event.stream.starts_with("page ") && event.text == "shown")
        return "expect " + event.stream + " shown";
    if (event.stream != "mcu source")
        return {};
    constexpr std::string_view unnamed = "type ";
    return "expect mcu source " + (event.text.starts_with(unnamed) ? event.text.substr(unnamed.size()) : event.text);
}

} // namespace

std::string composeScenario(const std::string& front, Clock::time_point begin, std::span<const SaidLine> said,
                            std::span<const Event> events, Clock::time_point end)
{
    std::vector<SaidLine> lines(said.begin(), said.end());
    for (const auto& event : events)
        if (auto line = expectationOf(event); !line.empty())
            lines.push_back({ event.at, std::move(line) });
    std::ranges::stable_sort(lines, {}, &SaidLine::at);

    // What has come by then is all.
    lines.push_back({ end, {} });

    std::string text(header);
    if (front != "none")
        text += "expect page " + front + " in-front\n";
    text += "mark\n";
    for (auto last = begin; const auto& line : lines)
    {
        // What is expected takes its own time.
        constexpr std::chrono::milliseconds leastWait { 10 };
        const auto gap = std::chrono::duration_cast<std::chrono::milliseconds>(line.at - std::exchange(last, line.at));
        if (!line.text.starts_with("expect ") && gap >= leastWait)
            text += "wait " + std::to_string(gap.count()) + "ms\n";
        text += line.text + (line.text.empty() ? "" : "\n");
    }
    return text;
}

std::optional<RecordedChanges> RecordedChanges::of(const std::string& scenario)
{
    if (!scenario.starts_with(header))
        return {};
    RecordedChanges changes;
    std::istringstream stream(scenario);
    for (std::string line; std::getline(stream, line);)
        if (line.starts_with("expect mcu source ") || (line.starts_with("expect page ") && line.ends_with(" shown")))
            changes.kindOf(line).left.push_back(line);
    std::ranges::reverse(changes.pages.left);
    std::ranges::reverse(changes.sources.left);
    return changes;
}

void RecordedChanges::begin(const Event& event)
{
    const auto line = expectationOf(event);
    kindOf(line).last = line;
}

std::string RecordedChanges::follow(const Event& event)
{
    const auto line = expectationOf(event);
    auto& kind = kindOf(line);
    // What is there already is no change.
    if (line.empty() || line == kind.last)
        return {};
    kind.last = line;
    while (kind.left.size() > 1 && kind.left.back() == kind.left[kind.left.size() - 2])
        kind.left.pop_back();
    const auto next = kind.left.empty() ? std::string() : kind.left.back();
    if (line == next)
    {
        kind.left.pop_back();
        return {};
    }
    constexpr std::string_view expect = "expect ";
    return line.substr(expect.size()) + " came, where the recording has " +
           (next.empty() ? "nothing more" : next.substr(expect.size()));
}

std::string Recorder::start(const std::string& fileToWrite)
{
    if (auto error = stop(); !error.empty())
        return error;
    if (!std::ofstream(fileToWrite))
        return fileToWrite + ": cannot be written";
    target = fileToWrite;
    begin = journal.end();
    const auto inFront = journal.find({}, 1, isIn(Expectations::frontStream));
    front = inFront.empty() ? "none" : inFront.back().text;
    said.clear();
    return {};
}

std::string Recorder::stop()
{
    if (!isRecording())
        return {};
    const auto events =
        journal.find(begin, Journal::capacity, [](const Event& event) { return !expectationOf(event).empty(); });
    const auto name = std::exchange(target, {});
    std::ofstream stream(name, std::ios::trunc);
    stream << composeScenario(front, begin.at, said, events, journal.end().at);
    return stream.flush() ? "" : name + ": cannot be written";
}

void Recorder::add(SaidLine line)
{
    if (isRecording())
        said.push_back(std::move(line));
}

} // namespace Bench
