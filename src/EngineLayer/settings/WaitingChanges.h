#pragma once

#include "platform/base/Threads.h"

#include <cstdint>
#include <map>
#include <set>
#include <utility>

namespace EngineLayer
{

/**
    Counts the announcements of each setting that wait for a thread, and bounds them. A listener reads the newest value,
    so a few waiting announcements are enough. Thus a program that changes settings very fast neither fills the memory
    nor delays the unit. Announcements that are left out are counted, and logged once for each setting. Any thread.
*/
class WaitingChanges
{
public:
    static constexpr int most = 4;

    explicit WaitingChanges(const char* waitsFor)
        : receiver(waitsFor)
    {
    }

    /** To be called before an announcement is posted. False when `most` already wait: do not post it. */
    bool add(int index, int origin);
    /** To be called before an announcement is carried out. */
    void remove(int index, int origin);
    std::uint64_t getLeftOut() const;

private:
    const char* receiver;
    Platform::Mutex lock;
    std::map<std::pair<int, int>, int> waiting; ///< by index and origin
    std::set<int> mentioned;
    std::uint64_t leftOut = 0;
};

} // namespace EngineLayer
