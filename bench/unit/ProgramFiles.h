#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <set>
#include <string>

namespace Bench
{

/** Makes the folder with a link to the bench's program for each source program. Empty on success, else what failed. */
std::string linkPrograms(const std::string& program, const std::string& folder);
/** The tables of a configuration that name the program of each page, with the programs in this folder. */
std::string programTables(const std::string& folder);

/**
    The files that the engine starts as source programs, each a link to the bench's program or to another one, and how they
    are made worse. A file that is no link stays as it is. One thread.
*/
class ProgramFiles
{
public:
    /** `standIn` is for files that are missing; `files` by application type. */
    void take(std::string standIn, std::map<int, std::string> files);

    // Empty on success, else what failed.

    /** From now on this program is started. */
    std::string replace(int appType, const std::string& program);
    /** The program takes so long to start from now on. */
    std::string install(int appType, std::chrono::milliseconds delay);
    /** Its file is missing from now on; one that runs goes on. */
    std::string remove(int appType);
    /** All as it was. */
    void restore();

    /** What is wrong with their starts, by application type. Any thread. */
    std::map<int, std::string> faults() const;
    /** Whether there is a file for the engine to start. */
    bool canStart(int appType) const;
    /** Application types whose file is another program than the stand-in. */
    std::set<int> foreign() const;

private:
    /** What its link points to. */
    struct Target
    {
        std::string before, now;
    };
    std::string fallback;
    std::map<int, std::string> paths;
    std::map<int, Target> changed;
    mutable std::mutex lock; // guards this one
    std::map<int, std::string> startFaults;

    /** "" when nothing is wrong any more. */
    void note(int appType, const std::string& fault);
};

} // namespace Bench
