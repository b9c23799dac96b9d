#pragma once

#include "bench/unit/Unit.h"
#include "ctl/Client.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace BenchPanel
{

using namespace Bench;

/** What the engine says of itself, as headunit-ctl gets it; null values while it cannot be asked. */
struct EngineTold
{
    Ctl::Json state;    ///< "State": front, rear, volume1, volume2, muted, muteReasons ...
    Ctl::Json pages;    ///< "Pages", the one in front first: page, show, zone ...
    Ctl::Json requests; ///< "Requests", oldest first: page, asker, status, because, askedForMs ...
    Ctl::Json programs; ///< "Programs": program, state, memoryBytes ...
    Ctl::Json why;      ///< "Why" of the page in front: sentence, facts
    Clock::time_point at;
};

/**
    Asks the engine, on a thread of its own, when something has happened in the unit, a few times a second at most, and
    every other second when nothing does: what it says has times and memory in it.
*/
class EngineAsker
{
public:
    /** The unit must outlive it; its bus has been started. */
    explicit EngineAsker(Unit& unitToAsk);
    ~EngineAsker();
    EngineAsker(const EngineAsker&) = delete;
    EngineAsker& operator=(const EngineAsker&) = delete;

    /** Never null. Any thread. */
    std::shared_ptr<const EngineTold> told() const;

    static constexpr std::chrono::milliseconds pause { 250 }, pauseAtRest { 2000 };

private:
    Unit& unit;
    mutable std::mutex lock;
    std::condition_variable_any ended;
    std::shared_ptr<const EngineTold> answers = std::make_shared<EngineTold>();
    std::jthread thread; // last: it uses all the others

    void work(const std::stop_token& stop, const std::string& bus);
};

} // namespace BenchPanel
