#pragma once

#include "bench/unit/Child.h"
#include "bench/unit/Journal.h"

#include <atomic>
#include <ios>

namespace Bench
{

/**
    The engine's process, a child of the bench. Journal stream "engine": "started", then "ended" and
    "exit 0" or "signal 9". What it wrote to its standard error before it ended without being asked goes to the bench's own. Any thread.
*/
class Engine
{
public:
    explicit Engine(Journal& journalToUse);

    struct Options
    {
        std::string program;
        std::vector<std::string> arguments;
        std::map<std::string, std::string> environment;
        std::string outputFile; ///< standard output and error
    };
    /** Empty on success, else what failed. */
    std::string start(const Options& options);
    /** Asks it to quit (SIGTERM), kills it after `limit`; returns when it has ended. */
    void stop(std::chrono::milliseconds limit = std::chrono::seconds(20));
    void kill();
    /** The same, without waiting for its end. */
    void cut();
    /** It ends by itself and has no last words: an update wants it so. Any thread. */
    void expectEnd() { asked = true; }
    /** Kills the programs that ended engines have left behind. The engine must not run. */
    void endPrograms() { child.endOrphans(); }
    bool isRunning() const { return child.isRunning(); }
    int pid() const { return child.pid(); }

private:
    Journal& journal;
    std::atomic<bool> asked { false }; ///< to end
    Child child;

    static void tellLastWords(const std::string& outputFile, std::streamoff begin);
};

} // namespace Bench
