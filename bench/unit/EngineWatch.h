#pragma once

#include "bench/unit/Journal.h"
#include "platform/base/WakeUp.h"
#include "platform/channel/linux/IpcSdBus.h"

#include <atomic>
#include <functional>
#include <thread>

namespace Bench
{

/**
    Sees a message bus come and go, and the process that is the engine on it, without starting either. Journal stream
    "bus": "started", "stopped"; "engine": "started" when it is on the bus, "ended" when its process is gone. Any thread.
*/
class EngineWatch
{
public:
    /** `ended` is called on the watching thread. */
    EngineWatch(Journal& journalToUse, std::function<void()> endedCall);
    ~EngineWatch() { stop(); }
    EngineWatch(const EngineWatch&) = delete;
    EngineWatch& operator=(const EngineWatch&) = delete;

    /** Neither needs to be there. */
    void start(std::string busAddress);
    void stop();

    /** -1 when there is none. */
    int pid() const;
    bool isBusThere() const { return busIsThere; }
    /** Kills it and waits for its end. Empty on success, else what failed. */
    std::string kill();

private:
    Journal& journal;
    const std::function<void()> ended;
    std::string address;
    Platform::WakeUp wakeUp; ///< set when the thread is to end
    std::jthread thread;

    std::atomic<bool> busIsThere { false };
    mutable std::mutex lock; // guards these two
    int process = -1;
    Platform::Descriptor handle; ///< of the process, readable when that has ended

    // On the thread.
    Platform::SdBus bus;
    Platform::SdBusSlot ownerMatch;

    void run(const std::stop_token& stop);
    void connect();
    void handleBus();
    void lookForEngine();
    void checkForEnd();
    void waitForNews();
    int handleOfEngine() const;
    static int onOwnerChanged(sd_bus_message* message, void* self, sd_bus_error* error);
};

} // namespace Bench
