#pragma once

#include "bench/console/Console.h"
#include "bench/panel/Desk.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

namespace BenchPanel
{

using namespace Bench;

/**
    Runs lines of the console, one after the other, on a thread of its own, as they may wait for the unit. Any thread may
    hand them over.
*/
class LineRunner
{
public:
    /** What has come of a line. */
    struct Said
    {
        std::uint64_t number = 0; ///< of the line, from 1; 0 before the first
        std::string line;
        std::string answer; ///< what the console has printed, or the error
        bool running = false, failed = false, leaves = false;
        bool recording = false; ///< when it had ended
        int dropped = 0;        ///< lines while it ran, as too many waited
    };
    /**
        The unit must outlive it. `pictureFolder` is where `picture` writes to. At its end it lets the line that runs end;
        the journal has to be interrupted for one that waits.
    */
    LineRunner(Unit& unit, std::string pictureFolder);
    LineRunner(const LineRunner&) = delete;
    LineRunner& operator=(const LineRunner&) = delete;

    /** Dropped, and counted, when `mostWaiting` wait already. */
    void run(const std::string& line);
    /** Forgets those that wait. */
    void forgetWaiting();
    Said last() const;
    /** Those that have ended since the last call, oldest first; of many, the newest. */
    std::vector<Said> takeEnded();

    /** A knob that is turned fast says more than a finger could; the rest is dropped. */
    static constexpr std::size_t mostWaiting = 16;

private:
    std::ostringstream output;
    Console console;
    mutable std::mutex lock;
    std::condition_variable_any news;
    std::deque<std::string> waiting;
    Said said;
    std::deque<Said> ended; ///< and not taken yet
    std::jthread thread;    // last: it uses all the others

    void work(const std::stop_token& stop);
};

} // namespace BenchPanel
