#pragma once

#include "platform/base/BoundedQueue.h"
#include "platform/base/Time.h"
#include "platform/channel/linux/IpcLink.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace Platform
{

/**
    The endpoint of this process on the bus. One thread processes the bus under the lock, with handlers that only file
    events, and delivers the events to the receiver outside it. Sends are allowed from any thread and never wait for a
    peer. A bus that goes away is tried again with growing pauses; meanwhile every program counts as absent.
*/
class IpcChannel
{
public:
    static IpcChannel& get();

    void config(int selfIndex, IpcLink::NameOf nameOf);
    /** False when another session has it. `close` gives it back. */
    bool claim();
    /**
        Starts the loop, and waits for the bus to answer, two seconds at most: the programs that are present are known
        then. False when it has not, or the own name has another owner.
    */
    bool open(IMsgProc& newReceiver);
    /** No call to the receiver runs after it returns. Not from a call to the receiver. */
    void close();

    bool post(int appType, const RemoteMessage::Ptr& message);
    bool broadcast(const RemoteMessage& message);
    bool broadcastNamed(const juce::String& action, const Bundle::Ptr& bundle);
    bool isPresent(int appType);
    int ownerProcess(int appType);
    void expectProcess(int appType, int pid);

private:
    IpcChannel();

    // The loop thread.
    void run();
    void tendLink();
    void deliver();
    void deliverOne(IpcEvent& event);
    void deliverWindowMessages();
    void waitForTraffic();
    void sendRest();

    // Under the lock.
    void connect();
    /** What is heard while the own name is not claimed yet waits: an answer would come from a stranger. */
    bool mayDeliver() const { return link == nullptr || link->isSettled(); }
    void loseLink(const char* what, int error);
    void finishAttempt(bool succeeded);
    bool hasRoom() const;
    void sendWaiting();
    template <typename Send>
    bool send(Send&& call);

    struct WindowMessage
    {
        std::int32_t message;
        std::int32_t wParam;
        std::int32_t lParam;
    };
    void fileWindowMessage(WindowMessage message);
    void wake() const;

    std::mutex lock;
    std::condition_variable attemptFinished;
    std::deque<IpcEvent> events;
    static constexpr std::size_t maxWindowMessages = 1024;
    BoundedQueue<WindowMessage, maxWindowMessages> windowMessages;
    IpcSeats seats { events };
    std::unique_ptr<IpcLink> link;
    int self = Pubhead::AppMain;
    IpcLink::NameOf resolver = Pubhead::appTypeName;
    std::optional<bool> firstAttempt;
    bool lossLogged = false;
    std::chrono::milliseconds pause {};
    Clock::time_point retryAt;
    int refusedSends = 0;

    struct Outgoing
    {
        std::string connection;
        RemoteMessage::Ptr message;
    };
    static constexpr std::size_t maxOutgoing = 4096;
    /** What a program gets once the bus takes more. */
    std::array<BoundedQueue<Outgoing, maxOutgoing>, IpcSeats::count> outgoing;

    bool claimed = false;
    std::atomic<bool> stopping { false };
    int wakeDescriptor;
    IMsgProc* receiver = nullptr;
    std::thread thread;
};

} // namespace Platform
