#pragma once

#include "bench/replay/RecordingFiles.h"
#include "bench/simulation/Scheduler.h"
#include "platform/base/Process.h"
#include "platform/channel/RemoteMessage.h"
#include "platform/devices/SerialPort.h"
#include "platform/record/Recorder.h"
#include "platform/screen/Overlay.h"

#include <atomic>
#include <map>
#include <set>

namespace Replay
{

using Simulation::Fiber;
using Simulation::Lane;
using Simulation::Scheduler;

/** What the engine has made that the recorded outside calls. */
struct Reached
{
    std::map<std::string, Platform::SerialCallBack*> ports;                 ///< open ones, by name
    std::map<std::int64_t, Platform::MultiTimer*> timers;                   ///< those that have been started, by number
    std::deque<std::function<void()>> calls;                                ///< for the message thread
    Platform::TouchHandler touched;                                         ///< empty while nobody watches
    std::map<std::string, Platform::OverlayWindow::PointerHandler> windows; ///< of the engine, by title
    Platform::IMsgProc* receiver = nullptr;                                 ///< of the channel
};

/**
    The recorded outside: it does to the engine what was done to it, answers what was answered, and lets each of the
    engine's threads go on when it did so. A thread that comes to another step than the recorded one ends the replay. One
    for the process, as the scheduler.
*/
class Follower : public Platform::Recorder
{
public:
    /** `place` tells how many records were followed, and outlives the process of the engine when it is shared. */
    Follower(Scheduler& schedulerToUse, const RecordingFiles& filesToFollow, std::atomic<std::size_t>& place);

    /** The one that exists. */
    static Follower& get();

    /** Follows until the end, the gap or the first difference. */
    void follow();
    /** Empty when there was none. */
    const std::string& difference() const { return different; }

    // The engine's side, on a fiber.

    std::chrono::milliseconds timeOfDay() const;
    void enter(Platform::Step step, const Platform::Fields& fields) override;
    void leave() override {}
    std::int64_t answer(Platform::Step step, Platform::Fields& asked, std::int64_t own) override;
    std::string answer(Platform::Step step, Platform::Fields& asked, std::string own) override;
    void finish() override {}
    /** Ends when the time has passed, or when the thread was further already. */
    void sleep(Platform::Clock::duration time);
    /** Ends the replay here. */
    void differ(const std::string& what);

    Reached reached;

private:
    struct Meeting
    {
        Platform::Step step;
        std::string fields;
        bool wantsAnswer;
        std::string answer;
        bool granted = false;
    };

    Scheduler& scheduler;
    const RecordingFiles& files;
    const Platform::Clock::time_point begin;
    std::atomic<std::size_t>& next;
    std::string different;
    std::map<Fiber*, Meeting> meetings; ///< of the threads that have come to a step
    std::set<Fiber*> sleepers;
    std::map<int, std::unique_ptr<Lane>> lanes; ///< of the threads on which the outside calls, by number

    std::string meet(Platform::Step step, const std::string& fields, bool wantsAnswer);
    void letTimePass(Platform::Clock::time_point end);
    void followOne(const Platform::Record& record);
    void deliver(const Platform::Record& record);
    void call(const Platform::Record& record);
    void letGoOn(const Platform::Record& record);
    Lane& laneOf(const Platform::Record& record);
    Fiber* fiberOf(const Platform::Record& record) const;
    Meeting* meetingOf(Fiber* fiber);
};

} // namespace Replay
