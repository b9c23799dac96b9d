#pragma once

#include "bench/unit/Journal.h"

#include <span>

namespace Bench
{

/** A line of the console that was carried out, and when it was said. */
struct SaidLine
{
    Clock::time_point at;
    std::string text;
};

/**
    What was said and what came of it from this time on, as a scenario: each line with the time before it, and an `expect`
    for each page that was shown and each source that the microcontroller has taken. `front` was the page in front
    then, "none" for none. Pure.
*/
std::string composeScenario(const std::string& front, Clock::time_point begin, std::span<const SaidLine> said,
                            std::span<const Event> events);

/** Whether `composeScenario` has written it. */
bool isRecording(std::string_view scenario);

/**
    The first page that was shown, or source that was taken, which the recording does not have there; "" for none. Pages
    and sources have each their own order, as they come from several processes. Pure.
*/
std::string differenceFrom(const std::string& recording, std::span<const Event> events);
/** Those of a journal that it looks at. */
std::vector<Event> recordedEvents(const Journal& journal, Place from);

/** Keeps what is said to a console, and writes it as a scenario. One thread. */
class Recorder
{
public:
    explicit Recorder(const Journal& journalToRead)
        : journal(journalToRead)
    {
    }
    /** Ends what is recorded. */
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    bool isRecording() const { return !target.empty(); }
    /** What it will be written to, "" for nothing. */
    const std::string& file() const { return target; }
    /**
        One before ends now. A file that is there has to be a recording, which stays until this one ends. Empty on
        success, else what failed.
    */
    std::string start(const std::string& fileToWrite);
    /** Writes the file, whole or not at all. Empty on success, as when nothing is recorded. */
    std::string stop();
    void add(SaidLine line);

private:
    const Journal& journal;
    std::string target, front;
    Place begin;
    std::vector<SaidLine> said;
};

} // namespace Bench
