#pragma once

#include "platform/channel/linux/IpcSdBus.h"
#include "platform/channel/linux/IpcSeats.h"

namespace Platform
{

/**
    One connection to the bus: what it sends, what it hears and whom it knows. First it learns who sits on the endpoint
    names; only then does it claim its own, so that whoever writes to it is known. Not locked, and without a thread: its
    user processes it. Failures are negative errnos, as the bus library gives them; a link that failed is thrown away.
*/
class IpcLink
{
public:
    using NameOf = const char* (*)(int);

    /** What is heard is filed under `seats` and `events`. */
    IpcLink(int selfIndex, NameOf endpointName, IpcSeats& table, std::deque<IpcEvent>& target);

    int start(const std::string& address);
    /** The configured bus, else that of the session; "" for none. */
    static std::string busAddress();
    /** Sends what waits and handles at most so many messages. */
    int process(int messages);

    /** True once every endpoint's owner is known and the own name was answered for. */
    bool isSettled() const { return claimAnswered; }
    /** False as long as another process holds the own name; it falls to this link afterwards. */
    bool ownsName() const { return nameOwned; }

    int getDescriptor() const { return sd_bus_get_fd(bus.get()); }
    short getPollEvents() const { return static_cast<short>(sd_bus_get_events(bus.get())); }
    /** Milliseconds until `process` has something to do by itself; -1 for never. */
    int getTimeout() const;
    /** Messages that the bus has not taken yet. */
    std::uint64_t getUnsent() const;

    /** To the connection that sits on a program's name. */
    int post(const std::string& connection, const RemoteMessage& message);
    int broadcast(const RemoteMessage& message);
    /** Signal "com.corvane" + "SystemInfo" for the action "com.corvane.SystemInfo". */
    int broadcast(const juce::String& action, const Bundle::Ptr& bundle);

private:
    /** The questions about one endpoint name that the bus has not answered yet. */
    struct Lookup
    {
        IpcLink* link = nullptr;
        int appType = 0;
        std::string connection;
        bool asksOwner = false;
        SdBusSlot ownerCall;
        SdBusSlot processCall;
    };

    int exportObject();
    int listenForOwners();
    int listenForBroadcasts();
    int listNames();
    int call(SdBusSlot& slot, const char* method, const char* argument, sd_bus_message_handler_t handler, void* data);
    int askForOwner(int appType);
    int ownerChanged(int appType, const char* connection);
    int claimOnceAllAreKnown();
    int fileMessage(sd_bus_message* source);
    int sendFilled(SdBusMessage message, int filled);

    std::string nameOfType(int appType) const;
    /** -1 for a name that is no other program's endpoint. */
    int typeOfName(const char* name) const;
    /** Handlers cannot end the link themselves: `process` does for them. */
    int fail(int result);

    static int onPost(sd_bus_message* message, void* link, sd_bus_error* error);
    static int onBroadcastText(sd_bus_message* message, void* link, sd_bus_error* error);
    static int onMessageSignal(sd_bus_message* message, void* link, sd_bus_error* error);
    static int onNameOwnerChanged(sd_bus_message* message, void* link, sd_bus_error* error);
    static int onNameAcquired(sd_bus_message* message, void* link, sd_bus_error* error);
    static int onMatchInstalled(sd_bus_message* reply, void* link, sd_bus_error* error);
    static int onNames(sd_bus_message* reply, void* link, sd_bus_error* error);
    static int onOwner(sd_bus_message* reply, void* lookup, sd_bus_error* error);
    static int onProcess(sd_bus_message* reply, void* lookup, sd_bus_error* error);
    static int onNameClaimed(sd_bus_message* reply, void* link, sd_bus_error* error);
    static const sd_bus_vtable vtable[];

    const int self;
    const NameOf nameOf;
    IpcSeats& seats;
    std::deque<IpcEvent>& events;

    // The bus goes last, after everything that refers to it.
    SdBus bus;
    SdBusSlot object;
    SdBusSlot ownerMatch;
    SdBusSlot acquiredMatch;
    SdBusSlot broadcastMatch;
    SdBusSlot listCall;
    SdBusSlot claimCall;
    std::array<Lookup, IpcSeats::count> lookups;
    bool listed = false;
    bool claimed = false;
    bool claimAnswered = false;
    bool nameOwned = false;
    int failure = 0;
};

} // namespace Platform
