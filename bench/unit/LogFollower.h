#pragma once

#include "bench/unit/Journal.h"

#include <atomic>
#include <thread>

namespace Bench
{

/** Reads a growing file into a stream of the journal, one event a line. Starts again when the file is replaced. */
class LogFollower
{
public:
    explicit LogFollower(Journal& journalToUse, std::string streamToUse = "log");
    ~LogFollower();
    LogFollower(const LogFollower&) = delete;
    LogFollower& operator=(const LogFollower&) = delete;

    /** The file need not exist yet, its folder must. Empty on success, else what failed. */
    std::string start(const std::string& path);
    void stop();

private:
    Journal& journal;
    std::string stream;
    std::string file;
    int notifications = -1, wakeUp = -1;
    std::thread thread;
    std::atomic<bool> stopping { false };
    int descriptor = -1;
    std::string partial;

    void run();
    void readNew();
    void add(const std::string& line);
    void reopenIfReplaced();
};

} // namespace Bench
