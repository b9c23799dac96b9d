#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <utility>

namespace EngineLayer
{

/**
    How many announcements of each setting are under way to a thread. Whoever is told of a change reads the newest
    value, so a few that wait are enough, and a program that changes settings faster than they take effect neither fills
    the memory nor leaves the unit behind. What is left out is counted, and logged once for each setting. Any thread.
*/
class WaitingChanges
{
public:
    static constexpr int most = 4;

    explicit WaitingChanges(const char* waitsFor)
        : receiver(waitsFor)
    {
    }

    /** Before an announcement is posted; false when enough of it wait, and it is to be left out. */
    bool add(int index, int origin);
    /** Before an announcement is carried out. */
    void remove(int index, int origin);
    std::uint64_t getLeftOut() const;

private:
    const char* receiver;
    mutable std::mutex lock;
    std::map<std::pair<int, int>, int> waiting; ///< by index and origin
    std::set<int> mentioned;
    std::uint64_t leftOut = 0;
};

} // namespace EngineLayer
