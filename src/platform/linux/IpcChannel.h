#pragma once

#include "platform/linux/IpcSeats.h"
#include "platform/linux/IpcSdBus.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace Platform
{

/**
    The endpoint of this process on the bus. One thread processes the bus, with handlers that only file events, and
    delivers the events to the receiver outside the lock. Sends are allowed from any thread and never wait for a peer. A
    bus that goes away is tried again with growing pauses.
*/
class IpcChannel
{
public:
    static IpcChannel& get();

    void config(int selfIndex, const char* (*nameOf)(int));
    bool open(IMsgProc& newReceiver);
    void close();

    bool post(int appType, const RemoteMessage& message);
    bool broadcast(const RemoteMessage& message);
    bool broadcastNamed(const juce::String& action, const Bundle::Ptr& bundle);
    bool isPresent(int appType);
    int ownerProcess(int appType);
    void expectProcess(int appType, int pid);

private:
    IpcChannel();

    // The loop thread.
    void run();
    bool connect();
    void process();
    void disconnect(int error);
    void deliver();
    void deliverOne(IpcEvent& event);
    void waitForTraffic();
    void pause();

    // Set-up of a connection and its handlers, under the lock.
    int claimName();
    int exportObject();
    int watchNames();
    int watchBroadcasts();
    int callBus(const char* member, const std::string& argument, sd_bus_message_handler_t handler, void* data,
                sd_bus_destroy_t destroy);
    void ownerChanged(const char* name, const char* connection);
    void askForProcess(int appType, const std::string& connection);
    int appTypeOfName(const char* name) const;
    std::string nameOfType(int appType) const;
    bool send(sd_bus_message* message);
    void wake();

    static int onPost(sd_bus_message* message, void* self, sd_bus_error* error);
    static int onBroadcastText(sd_bus_message* message, void* self, sd_bus_error* error);
    static int onMessageSignal(sd_bus_message* message, void* self, sd_bus_error* error);
    static int onNameOwnerChanged(sd_bus_message* message, void* self, sd_bus_error* error);
    static int onNameClaimed(sd_bus_message* reply, void* self, sd_bus_error* error);
    static int onNameList(sd_bus_message* reply, void* self, sd_bus_error* error);
    static int onNameOwner(sd_bus_message* reply, void* query, sd_bus_error* error);
    static int onProcess(sd_bus_message* reply, void* query, sd_bus_error* error);
    static const sd_bus_vtable vtable[];

    std::mutex lock;
    SdBus bus;
    std::deque<IpcEvent> events;
    IpcSeats seats { events };
    int self = Pubhead::AppMain;
    const char* (*resolver)(int) = Pubhead::appTypeName;
    std::atomic<bool> stopping { true };
    bool lossLogged = false;
    int pauseMs;
    int wakeDescriptor;
    IMsgProc* receiver = nullptr;
    std::thread thread;
};

} // namespace Platform
