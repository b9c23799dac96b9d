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

/** Keeps what is said to a console, and writes it as a scenario. One thread. */
class Recorder
{
public:
    explicit Recorder(const Journal& journalToRead)
        : journal(journalToRead)
    {
    }
    ~Recorder() { stop(); }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    bool isRecording() const { return !target.empty(); }
    /** What it will be written to, "" for nothing. */
    const std::string& file() const { return target; }
    /** One before ends now. Empty on success, else what failed. */
    std::string start(const std::string& fileToWrite);
    /** Writes the file. Empty on success, as when nothing is recorded. */
    std::string stop();
    void add(SaidLine line);

private:
    const Journal& journal;
    std::string target, front;
    Place begin;
    std::vector<SaidLine> said;
};

} // namespace Bench
