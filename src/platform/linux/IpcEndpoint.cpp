#include "platform/linux/IpcEndpoint.h"

#include "platform/Configuration.h"
#include "platform/Logger.h"
#include "platform/Window.h"
#include "platform/linux/IpcWire.h"

#include <bit>
#include <cstring>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Platform
{

namespace
{

using namespace std::chrono_literals;

constexpr const char* file = "platform/linux/IpcEndpoint";
constexpr const char* tag = "MsgSession";

constexpr const char* namePrefix = "com.corvane.";
constexpr const char* endpointPath = "/com/corvane/Endpoint";
constexpr const char* endpointInterface = "com.corvane.Endpoint";
constexpr const char* broadcastPath = "/com/corvane/Broadcast";
constexpr const char* ownerMatchRule = "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                                       "member='NameOwnerChanged',arg0namespace='com.corvane'";
constexpr const char* messageMatchRule =
    "type='signal',path='/com/corvane/Endpoint',interface='com.corvane.Endpoint',member='Message'";

constexpr auto openLimit = 2s;
constexpr auto flushLimit = 200ms;
constexpr auto firstPause = 100ms;
constexpr auto longestPause = 5000ms;
/** Bus messages between two deliveries. */
constexpr int messagesPerPass = 64;
/** Messages that the bus has not taken yet; beyond that it does not live, and nothing more is kept for it. */
constexpr std::uint64_t maxUnsent = 1024;
constexpr std::size_t maxWindowMessages = 4096;

/** Reply of RequestName: the name is ours; any other positive one: another process holds it and we are next. */
constexpr std::uint32_t primaryOwner = 1;

/** Answers one call to the bus: passes the endpoint to a member, with the reply or null for an error reply. */
template <void (*handle)(IpcEndpoint&, sd_bus_message*)> int answerWith(sd_bus_message* message, void* data, sd_bus_error*)
{
    handle(*static_cast<IpcEndpoint*>(data), message);
    return 0;
}

bool isError(sd_bus_message* reply)
{
    return sd_bus_message_is_method_error(reply, nullptr) > 0;
}

} // namespace

IpcEndpoint::WakeUp::WakeUp()
    : descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

IpcEndpoint::WakeUp::~WakeUp()
{
    ::close(descriptor);
}

void IpcEndpoint::WakeUp::signal() const
{
    eventfd_write(descriptor, 1);
}

void IpcEndpoint::WakeUp::clear() const
{
    eventfd_t count = 0;
    eventfd_read(descriptor, &count);
}
