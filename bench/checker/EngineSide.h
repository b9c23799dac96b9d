#pragma once

#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessage.h"
#include "platform/channel/linux/IpcSdBus.h"

#include <functional>
#include <string>

namespace Checker
{

/**
    A connection to the bus that behaves as the engine's, and sees every name and message as they came. It processes
    nothing by itself, and belongs to one thread. Failures are texts; "" for none.
*/
class EngineSide
{
public:
    /** Called by `connect` and `process`. */
    class Listener
    {
    public:
        virtual ~Listener() = default;
        virtual void onMessage(const std::string& connection, const Platform::RemoteMessage& message) = 0;
        /** A name of the system's has another owner, "" for none. */
        virtual void onOwner(const std::string& name, const std::string& connection) = 0;
        /** Of a message that was told with `isAsked`: why there is no object or method for it, "" when there is. */
        virtual void onAsked(const std::string& error) = 0;
    };

    explicit EngineSide(Listener& listenerToUse)
        : listener(listenerToUse)
    {
    }

    /** Without a name of its own yet; tells the listener who is there. */
    std::string connect(const std::string& address);
    /** Owns the engine's name, or waits in the queue for it. */
    std::string ownName();

    using Fill = std::function<int(sd_bus_message*)>;
    /** To one connection. With `isAsked` the bus says whether there was a method for it. */
    std::string tell(const std::string& connection, const Fill& content, bool isAsked = false);
    /** To all programs. */
    std::string tellAll(const Fill& content);

    /** Handles one message. 0 when there is none; a negative errno when the bus is gone. */
    int process();
    /** Until everything told is on its way. */
    std::string flush();
    const std::string& ownConnection() const { return connection; }
    int descriptor() const { return sd_bus_get_fd(bus.get()); }
    short pollEvents() const { return static_cast<short>(sd_bus_get_events(bus.get())); }

private:
    std::string fetchOwners();
    std::string send(int made, sd_bus_message* message, const Fill& content, bool isAsked);

    static int onPost(sd_bus_message* message, void* side, sd_bus_error* error);
    static int onNameOwnerChanged(sd_bus_message* message, void* side, sd_bus_error* error);
    static int onAnswer(sd_bus_message* reply, void* side, sd_bus_error* error);
    static const sd_bus_vtable vtable[];

    Listener& listener;
    std::string connection;
    Platform::SdBus bus; ///< before its slots, which go first
    Platform::SdBusSlot object, owners, asked;
};

} // namespace Checker
