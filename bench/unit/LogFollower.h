#pragma once

#include "bench/unit/Loop.h"

namespace Bench
{

/** Reads a growing file into a stream of the journal, one event a line. Starts again when the file is replaced. */
class LogFollower
{
public:
    LogFollower(Loop& loopToUse, Journal& journalToUse, std::string streamToUse = "log");
    ~LogFollower() { stop(); }
    LogFollower(const LogFollower&) = delete;
    LogFollower& operator=(const LogFollower&) = delete;

    /** The file need not exist yet, its folder must; what is in it may be left out. Empty on success, else what failed. */
    std::string start(const std::string& path, bool onlyNew = false);
    void stop();
    /** Told of each line before the journal is, in a turn. Before `start`. */
    std::function<void(const std::string& line)> heard = [](const std::string&) {};

private:
    Loop& loop; // its turns guard everything below
    Journal& journal;
    std::string stream;
    std::string file;
    int notifications = -1;
    std::unique_ptr<Watch> watch;
    int descriptor = -1;
    std::string partial;

    void readNew();
    void add(const std::string& line);
    void reopenIfReplaced();
};

} // namespace Bench
