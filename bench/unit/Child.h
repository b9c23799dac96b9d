#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace Bench
{

/**
    A process that the bench starts. It ends with the bench, however that ends. What it starts itself stays in its
    process group and, when it has ended, becomes a child of the bench if that adopts it. Any thread, one at a time for `start` and
    `endOrphans`.
*/
class Child
{
public:
    struct Options
    {
        std::string program;
        std::vector<std::string> arguments;
        std::map<std::string, std::string> environment; ///< on top of this process's own
        std::string outputFile;                         ///< gets standard output and error
        std::vector<int> keptDescriptors;               ///< stay open in the child under the same numbers
        bool adopts = true;
    };

    /** The wait status as waitpid gives it. Called on the child's watching thread. */
    using Ended = std::function<void(int status)>;

    Child() = default;
    ~Child(); ///< kills what still runs
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /** Empty on success, else what failed. The child must not run already. */
    std::string start(const Options& options, Ended ended = {});
    bool isRunning() const;
    int pid() const;
    /** False when it does not run. */
    bool signal(int number);
    /** False at the deadline. */
    bool waitForEnd(std::chrono::milliseconds limit) const;
    /** SIGTERM, after `limit` SIGKILL; returns when it has ended. */
    void end(std::chrono::milliseconds limit);
    /** Kills what this process and those before it have left behind. It must have ended. */
    void endOrphans();

private:
    mutable std::mutex lock;
    mutable std::condition_variable changed;
    pid_t process = -1; // -1 as soon as it is reaped, so that no signal reaches a later process with its number
    std::thread watcher;
    std::vector<pid_t> groups; ///< of the processes so far

    /** Empty on success, else what failed. The watching thread. */
    std::string launch(const Options& options);
    void watch(pid_t watched, const Ended& ended);
};

/**
    The line, without its end, that a child writes to a pipe when it is ready; "" when it ends or the limit passes
    first.
*/
std::string readLine(int descriptor, std::chrono::milliseconds limit);

/** "exit 0" or "signal 11". */
std::string describeStatus(int status);

} // namespace Bench
