#pragma once

#include "bench/console/Expect.h"
#include "bench/console/Recorder.h"
#include "bench/console/Transcript.h"
#include "bench/unit/Unit.h"
#include "ctl/Style.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace Bench
{

using Ctl::Style;

/** What the commands of one person or one script share. One thread. */
class Console
{
public:
    Console(Unit& unitToUse, Style styleToUse, std::ostream& outputToUse, bool somebodyWatches);

    /** The sections that the script has chosen, else all. */
    TranscriptSections transcriptSections() const { return chosenSections.value_or(TranscriptSections::all()); }

    Unit& unit;
    const Style style;
    std::ostream& output;
    const bool watched;             ///< somebody sees the output as it comes
    bool tellsConsequences = false; ///< of each line, to a person
    Expectations expectations;
    Recorder recorder;
    double speed = 1;                  ///< of a replay: so many times as fast
    std::vector<std::string> replayed; ///< files, each said by the one before
    /** In a replay: what is not as it was, "" for nothing. */
    std::function<std::string()> difference;
    std::string pictureFolder; ///< where `picture` writes to; "" leaves pictures out
    std::optional<TranscriptSections> chosenSections;
    /** Shows the unit until somebody ends it or the time is over; without it `watch` shows it once. */
    std::function<void(std::optional<std::chrono::milliseconds> duration)> liveView;
    Place headline; ///< the journal's end when the last headline was written, or a person's last command given

    /** Waits until a finger could press the next key. */
    void moveFinger();
    /** The next key may be pressed only after a finger's time from now. */
    void restFinger() { nextKey = Clock::now() + fingerGap; }
    /** A labelled value. */
    void row(const std::string& label, const std::string& value) const;

private:
    static constexpr std::chrono::milliseconds fingerGap { 150 };
    Clock::time_point nextKey; ///< not earlier
};

} // namespace Bench
