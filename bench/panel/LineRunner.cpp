#include "bench/panel/LineRunner.h"

#include "bench/console/EventText.h"
#include "bench/console/Verb.h"

namespace BenchPanel
{

namespace
{

constexpr std::size_t mostEnded = 64;

} // namespace

LineRunner::LineRunner(Unit& unit, std::string pictureFolder)
    : console(unit, Bench::Style(false), output, true)
{
    console.pictureFolder = std::move(pictureFolder);
    thread = std::jthread([this](const std::stop_token& stop) { work(stop); });
}

void LineRunner::run(const std::string& line)
{
    {
        const std::scoped_lock guard(lock);
        if (waiting.size() < mostWaiting)
            waiting.push_back(line);
        else
            ++said.dropped;
    }
    news.notify_all();
}

void LineRunner::forgetWaiting()
{
    const std::scoped_lock guard(lock);
    waiting.clear();
}

LineRunner::Said LineRunner::last() const
{
    const std::scoped_lock guard(lock);
    return said;
}

std::vector<LineRunner::Said> LineRunner::takeEnded()
{
    const std::scoped_lock guard(lock);
    const auto taken = std::exchange(ended, {});
    return { taken.begin(), taken.end() };
}

void LineRunner::work(const std::stop_token& stop)
{
    std::unique_lock guard(lock);
    while (news.wait(guard, stop, [&] { return !waiting.empty(); }) && !stop.stop_requested())
    {
        said = { said.number + 1, std::move(waiting.front()), {}, true, false, false, said.recording };
        waiting.pop_front();
        const auto line = said.line;
        // What comes of a line is waited for, unless the person has said more already: a knob is turned fast.
        console.tellsConsequences = waiting.empty();
        guard.unlock();
        output.str({});
        console.unit.journal.goOn(); // what was given up before is over
        console.unit.journal.add(saidStream, line);
        const auto outcome = runLine(console, line);
        guard.lock();
        said.running = false;
        said.failed = outcome.kind == Outcome::failed;
        said.leaves = outcome.kind == Outcome::leave;
        said.recording = console.recorder.isRecording();
        said.answer = said.failed ? outcome.error : output.str();
        ended.push_back(said);
        if (ended.size() > mostEnded)
            ended.pop_front();
        if (said.leaves)
            waiting.clear();
    }
}

} // namespace BenchPanel
