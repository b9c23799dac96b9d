#include "bench/console/Recorder.h"

#include "bench/console/Expect.h"

#include <algorithm>
#include <fstream>
#include <utility>

namespace Bench
{

namespace
{

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
                            std::span<const Event> events)
{
    std::vector<SaidLine> lines(said.begin(), said.end());
    for (const auto& event : events)
        if (auto line = expectationOf(event); !line.empty())
            lines.push_back({ event.at, std::move(line) });
    std::ranges::stable_sort(lines, {}, &SaidLine::at);

    std::string text = "# What a person did, as `record` wrote it: `replay` does it again.\n";
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
        text += line.text + "\n";
    }
    return text;
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
    stream << composeScenario(front, begin.at, said, events);
    return stream.flush() ? "" : name + ": cannot be written";
}

void Recorder::add(SaidLine line)
{
    if (isRecording())
        said.push_back(std::move(line));
}

} // namespace Bench
