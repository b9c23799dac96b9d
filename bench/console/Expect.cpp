#include "bench/console/Expect.h"

#include <algorithm>

namespace Bench
{

namespace
{

bool meets(const Event& event, const Expectation& expectation)
{
    return event.stream == expectation.stream &&
           (expectation.text.empty() || event.text == expectation.text ||
            (expectation.isPart && event.text.find(expectation.text) != std::string::npos));
}

} // namespace

Expectations::Expectations(const Journal& journalToRead)
    : journal(journalToRead)
{
}

void Expectations::forgetThePast()
{
    beginning = journal.end();
    cursors.clear();
}

Place Expectations::cursorOf(const std::string& stream) const
{
    const auto found = cursors.find(stream);
    return found != cursors.end() ? found->second : beginning;
}

std::optional<Event> Expectations::meet(const Expectation& expectation, Clock::time_point deadline)
{
    if (expectation.isState)
    {
        // The engine may be read faster than the program, which alone can be told what to do next.
        if (expectation.stream == settledStream && !journal.waitForLatest(frontStream, expectation.text, deadline))
            return {};
        if (!journal.waitForLatest(expectation.stream, expectation.text, deadline))
            return {};
        return journal.find({}, 1, isEvent(expectation.stream, expectation.text)).back();
    }
    const auto met = journal.waitFor(cursorOf(expectation.stream), deadline,
                                     [&](const Event& event) { return meets(event, expectation); });
    if (met)
        cursors[expectation.stream] = met->behind();
    return met;
}

std::string Expectations::wait(const Expectation& expectation, std::chrono::milliseconds limit)
{
    if (meet(expectation, Clock::now() + limit))
        return {};
    return seenInstead(expectation, expectation.isState ? beginning : cursorOf(expectation.stream));
}

std::string Expectations::staysAwayUntil(const Expectation& absent, const Expectation& end,
                                         std::chrono::milliseconds limit)
{
    const auto from = cursorOf(absent.stream);
    const auto met = meet(end, Clock::now() + limit);
    if (!met)
        return "missing: " + end.description + "\n" + seenInstead(end, cursorOf(end.stream));
    const auto seen = journal.waitFor(from, Clock::now(), [&](const Event& event) { return meets(event, absent); });
    if (!seen || seen->place() >= met->place())
        return {};
    return "seen although it should not be: " + seen->stream + " " + seen->text;
}

std::string Expectations::waitInOrder(const std::vector<Expectation>& inOrder, std::chrono::milliseconds limit,
                                      std::chrono::milliseconds apart)
{
    const auto deadline = Clock::now() + limit;
    auto from = beginning;
    auto earliest = Clock::time_point::min();
    for (const auto& expectation : inOrder)
    {
        from = std::max(from, cursorOf(expectation.stream));
        const auto met = journal.waitFor(from, deadline, [&](const Event& event) { return meets(event, expectation); });
        if (!met)
            return "missing: " + expectation.description + "\n" +
                   seenInstead(expectation, cursorOf(expectation.stream));
        if (met->at < earliest)
            return "too early: " + expectation.description;
        earliest = met->at + apart;
        from = met->behind();
        cursors[expectation.stream] = from;
    }
    return {};
}

bool Expectations::staysAway(const Expectation& expectation, std::chrono::milliseconds duration) const
{
    return !journal.waitFor(cursorOf(expectation.stream), Clock::now() + duration,
                            [&](const Event& event) { return meets(event, expectation); });
}

std::string Expectations::seenInstead(const Expectation& expectation, Place from) const
{
    if (journal.isInterrupted())
        return "interrupted";
    constexpr std::size_t shown = 8;
    auto seen = journal.find(from, shown, isIn(expectation.stream));
    std::string text;
    if (seen.empty())
    {
        text = "nothing on '" + expectation.stream + "'; the last on the others:";
        seen = journal.find(from, shown, [](const Event& event) { return !isDetail(event); });
    }
    for (const auto& event : seen)
        text += (text.empty() ? "" : "\n") + event.stream + " " + event.text;
    return text;
}

} // namespace Bench
