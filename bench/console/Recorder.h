#pragma once

#include "bench/unit/Journal.h"

#include <optional>
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
    What was said and what came of it from `begin` to `end`, as a scenario: each line with the time before it, and an
    `expect` for each page that was shown and each source that the microcontroller has taken. `front` was the page in
    front at the begin, "none" for none. Pure.
*/
std::string composeScenario(const std::string& front, Clock::time_point begin, std::span<const SaidLine> said,
                            std::span<const Event> events, Clock::time_point end);

/**
    The pages and sources of a recording, which are all that may come when it is done again, in its order: that of the
    pages and that of the sources, as the two depend on different devices. Pure.
*/
class RecordedChanges
{
public:
    /** None for a scenario that `composeScenario` has not made: what it does not expect may come. */
    static std::optional<RecordedChanges> of(const std::string& scenario);

    /** Something is so already: that it comes is no change. */
    void begin(const Event& event);
    /** Empty as long as what happens is what was recorded, else the difference in words. */
    std::string follow(const Event& event);

private:
    struct Kind
    {
        std::vector<std::string> left; ///< lines, the next last
        std::string last;              ///< that came
    };
    Kind pages, sources;

    Kind& kindOf(const std::string& line) { return line.starts_with("expect page ") ? pages : sources; }
};

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
