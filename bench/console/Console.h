#pragma once

#include "bench/console/Expect.h"
#include "bench/console/Script.h"
#include "bench/console/Style.h"
#include "bench/console/Transcript.h"
#include "bench/unit/Unit.h"

#include <functional>
#include <iosfwd>

namespace Bench
{

/** What became of one line. */
struct Outcome
{
    enum Kind { done, failed, leave } kind = done;
    std::string error {}; ///< for `failed`; one line, more for what was seen instead
};

inline Outcome failed(std::string error)
{
    return { Outcome::failed, std::move(error) };
}

/** A talk with a unit, line by line, by a person or a script: what its lines share. One thread. */
class Console
{
public:
    Console(Unit& unitToUse, Style styleToUse, std::ostream& outputToUse, bool somebodyWatches);

    Outcome run(const std::string& line);
    Outcome run(const Words& line);
    /** Runs every line and stops at the first that fails, which it names ("tour.scenario:12"). True when all succeeded.
     */
    bool runScript(std::istream& script, const std::string& name);
    /** Those that the script has chosen, else all. */
    TranscriptSections transcriptSections() const { return chosenSections.value_or(TranscriptSections::all()); }

    // For the verbs.
    Unit& unit;
    const Style style;
    std::ostream& output;
    const bool watched; ///< somebody sees the output as it comes
    Expectations expectations;
    std::string pictureFolder; ///< where `picture` writes to; "" leaves pictures out
    std::optional<TranscriptSections> chosenSections;
    /** Shows the unit until somebody ends it or the time is over; without it `watch` shows it once. */
    std::function<void(std::optional<std::chrono::milliseconds> duration)> liveView;
    Place headline; ///< the journal's end when the last headline was written
    Clock::time_point headlineAt = Clock::now();

    /** No finger presses one key after the other faster than this: waits for the rest of it. */
    void moveFinger();
    /** The finger comes back only after its time from now on. */
    void restFinger() { nextKey = Clock::now() + fingerGap; }
    /** A labelled value. */
    void row(const std::string& label, const std::string& value) const;

private:
    static constexpr std::chrono::milliseconds fingerGap { 150 };
    Clock::time_point nextKey; ///< not earlier
};

} // namespace Bench
