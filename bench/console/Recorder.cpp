#include "bench/console/Recorder.h"

#include "bench/console/Expect.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace Bench
{

namespace
{

constexpr std::string_view heading = "# What a person did, as `record` wrote it: `replay` does it again.\n";
constexpr std::string_view pageExpected = "expect page ", sourceExpected = "expect mcu source ";

std::string textOf(const std::string& file)
{
    std::ifstream stream(file);
    return { std::istreambuf_iterator<char>(stream), {} };
}

/** The line that expects what the event tells; "" when a scenario does not mind. */
std::string expectationOf(const Event& event)
{
    if (event.stream.starts_with("page ") && event.text == "shown")
        return "expect " + event.stream + " shown";
    if (event.stream != "mcu source")
        return {};
    constexpr std::string_view unnamed = "type ";
    return std::string(sourceExpected) +
           (event.text.starts_with(unnamed) ? event.text.substr(unnamed.size()) : event.text);
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

    std::string text(heading);
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

bool isRecording(std::string_view scenario)
{
    return scenario.starts_with(heading);
}

std::string differenceFrom(const std::string& recording, std::span<const Event> events)
{
    for (const auto kind : { pageExpected, sourceExpected })
    {
        std::istringstream lines(recording);
        for (const auto& event : events)
        {
            const auto seen = expectationOf(event);
            if (!seen.starts_with(kind))
                continue;
            std::string line;
            while (std::getline(lines, line) &&
                   !(line.starts_with(kind) && (kind != pageExpected || line.ends_with(" shown"))))
                ;
            if (!lines || line != seen)
                return event.stream + " " + event.text + ", where the recording has " +
                       (lines ? line.substr(line.find(' ') + 1) : "nothing any more");
        }
    }
    return {};
}

std::vector<Event> recordedEvents(const Journal& journal, Place from)
{
    return journal.find(from, Journal::capacity, [](const Event& event) { return !expectationOf(event).empty(); });
}

Recorder::~Recorder()
{
    if (const auto error = stop(); !error.empty())
        std::cerr << error << std::endl;
}

std::string Recorder::start(const std::string& fileToWrite)
{
    if (auto error = stop(); !error.empty())
        return error;
    namespace files = std::filesystem;
    std::error_code error;
    if (files::exists(fileToWrite, error) && !Bench::isRecording(textOf(fileToWrite)))
        return fileToWrite + " is there and is no recording";
    const auto folder = files::absolute(fileToWrite, error).parent_path();
    if (::access(folder.c_str(), W_OK) != 0)
        return fileToWrite + ": " + std::strerror(errno);
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
    const auto name = std::exchange(target, {}), part = name + ".part";
    std::ofstream stream(part, std::ios::trunc);
    stream << composeScenario(front, begin.at, said, recordedEvents(journal, begin));
    stream.close();
    if (stream && std::rename(part.c_str(), name.c_str()) == 0)
        return {};
    return name + ": cannot be written";
}

void Recorder::add(SaidLine line)
{
    if (isRecording())
        said.push_back(std::move(line));
}

} // namespace Bench
