#pragma once

#include "bench/unit/Journal.h"

#include <juce_core/juce_core.h>

namespace BenchPanel
{

/** A line as it could be typed in the console. */
using ConsoleLine = juce::String;

/** What the areas of the panel can do: say something to the console. Message thread. */
class Desk
{
public:
    virtual ~Desk() = default;

    /** Runs the line behind those that were given before, and shows it in the command field. Returns at once. */
    virtual void run(const ConsoleLine& line) = 0;
    /** What Escape does: puts the console's sheet away; else ends the wait of the line that runs, and forgets those behind it. */
    virtual void cancel() = 0;
    /** Puts the beginning of a line into the command field, for the person to finish. */
    virtual void propose(const ConsoleLine& beginning) = 0;
    /** Shows where this moment is among the frames of the link; nowhere without one. */
    virtual void markMoment(std::optional<Bench::Clock::time_point> moment) = 0;
    /** What the console has said so far comes or goes. */
    virtual void toggleConsole() = 0;
};

} // namespace BenchPanel
