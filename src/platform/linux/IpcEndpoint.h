#pragma once

#include "platform/linux/IpcSdBus.h"
#include "platform/linux/IpcSeats.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace Platform
{

/**
    This process's place on the message bus. One loop thread processes the bus under the lock, with handlers that only
    queue, and delivers outside it; everybody else sends under the lock and never waits for a peer. A lost bus is sought
    again with growing pauses; meanwhile every program counts as absent.
*/
class IpcEndpoint
{
public:
    static IpcEndpoint& get();

    void configure(int selfIndex, const char* (*nameOf)(int));
    /** False when another session holds the endpoint. */
    bool claim();
    /** Starts the loop and waits, two seconds at most, for the bus to answer the first attempt. */
    bool open(IMsgProc* newReceiver);
    /** Ends delivery and gives the endpoint back. Not from the delivery thread. */
    void close();

    bool post(int appType, const RemoteMessage& message);
    bool broadcast(const RemoteMessage& message);
    bool broadcast(const juce::String& action, const Bundle::Ptr& bundle);
    bool isPresent(int appType);
    int ownerProcess(int appType);
    void expectProcess(int appType, int pid);

private:
    using Clock = std::chrono::steady_clock;

    enum class Attempt { running, succeeded, failed };

    /** A descriptor that ends the loop's poll. */
    class WakeUp
    {
    public:
        WakeUp();
        ~WakeUp();
        int getDescriptor() const { return descriptor; }
        void signal() const;
        void clear() const;

    private:
        int descriptor;
        JUCE_DECLARE_NON_COPYABLE(WakeUp)
    };

    IpcEndpoint() = default;

    // The loop's side, on its thread; all but run, deliver and flush under the lock.
    void run();
    void deliver(std::deque<IpcEvent>& batch);
    void flush();
    void connect();
    int startConnection();
    int addHandlers();
    void processBus();
    void loseBus(int error);
    int pollTimeout() const;
    void finishAttempt(Attempt result);

    // Conversation with the bus.
    int callBus(SdBusSlot& slot, const char* method, const char* argument, sd_bus_message_handler_t answer);
    void askOwner(int appType);
    void askProcess(int appType);
    void claimNameWhenKnown();
    int typeOfName(const char* name) const;
    void onNames(sd_bus_message* reply);
    void onOwnerChanged(sd_bus_message* signal);
    void onNameClaimed(sd_bus_message* reply);
    void queueMessage(sd_bus_message* source);
    void queueWindowMessage(IpcWindowMessage message);

    /** Fills and sends a message; the lock is held by `send`. */
    template <typename Create, typename Fill> bool send(Create&& create, Fill&& fill);

    std::mutex lock;
    std::condition_variable attemptDone;
    std::thread thread;
    WakeUp wakeUp;
    bool claimed = false;
    bool stopping = false;
    IMsgProc* receiver = nullptr;

    int self = Pubhead::AppMain;
    std::array<std::string, IpcSeats::count> names;
    std::map<std::string, int, std::less<>> typesByName;
    juce::String address;

    SdBus bus;
    SdBusSlot objectSlot;
    SdBusSlot ownerMatch;
    SdBusSlot messageMatch;
    SdBusSlot listCall;
    SdBusSlot nameCall;
    std::array<SdBusSlot, IpcSeats::count> ownerCalls;
    std::array<SdBusSlot, IpcSeats::count> processCalls;
    bool namesListed = false;
    bool nameRequested = false;
    bool failed = false;

    Attempt attempt = Attempt::running;
    Clock::time_point retryAt;
    std::chrono::milliseconds pause {};
    bool lossLogged = false;
    int unsent = 0;

    std::deque<IpcEvent> events;
    IpcSeats seats { events };
};

} // namespace Platform
