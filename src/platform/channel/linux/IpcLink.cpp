#include "platform/channel/linux/IpcLink.h"

#include "platform/base/Logger.h"
#include "platform/base/Time.h"
#include "platform/channel/linux/IpcWire.h"
#include "platform/config/Configuration.h"

#include <algorithm>
#include <chrono>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/linux/IpcLink", "MsgSession" };
constexpr const char* namePrefix = busNamePrefix;
constexpr const char* broadcastPath = "/com/corvane/Broadcast";
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* processUnknown = "org.freedesktop.DBus.Error.UnixProcessIdUnknown";
/** Answer to a claim; any other says that the name has an owner already and that the claim waits. */
constexpr std::uint32_t primaryOwner = 1;

IpcLink& linkOf(void* data)
{
    return *static_cast<IpcLink*>(data);
}

bool isError(sd_bus_message* reply)
{
    return sd_bus_message_is_method_error(reply, nullptr) > 0;
}

} // namespace

const sd_bus_vtable IpcLink::vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Post", SD_BUS_ARGS("i", what, "i", arg1, "i", arg2, "a{sv}", bundle), SD_BUS_NO_RESULT,
                            IpcLink::onPost, SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
    SD_BUS_METHOD_WITH_ARGS("Broadcast", SD_BUS_ARGS("s", text), SD_BUS_NO_RESULT, IpcLink::onBroadcastText,
                            SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
    SD_BUS_SIGNAL_WITH_ARGS("Message", SD_BUS_ARGS("i", what, "i", arg1, "i", arg2, "a{sv}", bundle), 0),
    SD_BUS_VTABLE_END
};

IpcLink::IpcLink(int selfIndex, NameOf endpointName, IpcSeats& table, std::deque<IpcEvent>& target)
    : self(selfIndex)
    , nameOf(endpointName)
    , seats(table)
    , events(target)
{
    for (int appType = 0; appType < IpcSeats::count; ++appType)
    {
        auto& lookup = lookups[static_cast<std::size_t>(appType)];
        lookup.link = this;
        lookup.appType = appType;
    }
}

std::string IpcLink::busAddress()
{
    if (const auto& configured = Configuration::get().ipcAddress; configured.isNotEmpty())
        return configured.toStdString();
    if (const char* session = std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        return session;
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"))
        return std::string("unix:path=") + runtime + "/bus";
    return {};
}

int IpcLink::start(const std::string& address)
{
    int result = prepareBus(bus, address);
    if (result >= 0)
        result = sd_bus_start(bus.get());
    // Who comes after the listening began is reported, who was there before is listed: nobody is missed.
    for (const auto step :
         { &IpcLink::exportObject, &IpcLink::listenForOwners, &IpcLink::listenForBroadcasts, &IpcLink::listNames })
        if (result >= 0)
            result = (this->*step)();
    return result;
}

int IpcLink::exportObject()
{
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_object_vtable(bus.get(), &slot, endpointPath, endpointInterface, vtable, this);
    object.reset(slot);
    return result;
}

int IpcLink::listenForOwners()
{
    const auto rule = std::string("type='signal',sender='") + busName + "',interface='" + busName +
                      "',member='NameOwnerChanged',arg0namespace='com.corvane'";
    sd_bus_slot* slot = nullptr;
    int result = sd_bus_add_match_async(bus.get(), &slot, rule.c_str(), onNameOwnerChanged, onMatchInstalled, this);
    ownerMatch.reset(slot);
    if (result < 0)
        return result;
    // The bus tells the new owner without being asked; the rule is only for the library.
    const auto acquired = std::string("type='signal',sender='") + busName + "',interface='" + busName +
                          "',member='NameAcquired',arg0='" + nameOfType(self) + "'";
    slot = nullptr;
    result = sd_bus_add_match_async(bus.get(), &slot, acquired.c_str(), onNameAcquired, onMatchInstalled, this);
    acquiredMatch.reset(slot);
    return result;
}

int IpcLink::listenForBroadcasts()
{
    // The engine is the one that broadcasts.
    if (self == Pubhead::AppMain)
        return 0;
    const auto rule =
        std::string("type='signal',path='") + endpointPath + "',interface='" + endpointInterface + "',member='Message'";
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_match_async(bus.get(), &slot, rule.c_str(), onMessageSignal, onMatchInstalled, this);
    broadcastMatch.reset(slot);
    return result;
}

int IpcLink::listNames()
{
    sd_bus_slot* slot = nullptr;
    const int result =
        sd_bus_call_method_async(bus.get(), &slot, busName, busPath, busName, "ListNames", onNames, this, "");
    listCall.reset(slot);
    return result;
}

int IpcLink::process(int messages)
{
    for (int handled = 0; handled < messages; ++handled)
    {
        const int result = sd_bus_process(bus.get(), nullptr);
        if (result < 0)
            return result;
        if (failure < 0)
            return failure;
        if (result == 0)
            break;
    }
    return 0;
}

int IpcLink::getTimeout() const
{
    std::uint64_t dueUs = 0;
    if (sd_bus_get_timeout(bus.get(), &dueUs) <= 0 || dueUs == UINT64_MAX)
        return -1;
    using namespace std::chrono;
    const auto left = microseconds(dueUs) - duration_cast<microseconds>(Clock::now().time_since_epoch());
    constexpr milliseconds longest = minutes(1);
    return static_cast<int>(std::clamp(ceil<milliseconds>(left), milliseconds(0), longest).count());
}

std::uint64_t IpcLink::getUnsent() const
{
    std::uint64_t count = 0;
    sd_bus_get_n_queued_write(bus.get(), &count);
    return count;
}

int IpcLink::post(const std::string& connection, const RemoteMessage& message)
{
    sd_bus_message* raw = nullptr;
    int result =
        sd_bus_message_new_method_call(bus.get(), &raw, connection.c_str(), endpointPath, endpointInterface, "Post");
    SdBusMessage call(raw);
    if (result >= 0)
        result = sd_bus_message_set_expect_reply(raw, 0);
    if (result >= 0)
        result = IpcWire::append(raw, message);
    return sendFilled(std::move(call), result);
}

int IpcLink::broadcast(const RemoteMessage& message)
{
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_signal(bus.get(), &raw, endpointPath, endpointInterface, "Message");
    SdBusMessage signal(raw);
    if (result >= 0)
        result = IpcWire::append(raw, message);
    return sendFilled(std::move(signal), result);
}

int IpcLink::broadcast(const juce::String& action, const Bundle::Ptr& bundle)
{
    const auto interface = action.upToLastOccurrenceOf(".", false, false).toStdString();
    const auto member = action.fromLastOccurrenceOf(".", false, false).toStdString();
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_signal(bus.get(), &raw, broadcastPath, interface.c_str(), member.c_str());
    SdBusMessage signal(raw);
    if (result >= 0)
        result = IpcWire::append(raw, bundle);
    return sendFilled(std::move(signal), result);
}

int IpcLink::sendFilled(SdBusMessage message, int filled)
{
    return filled < 0 ? filled : sd_bus_send(bus.get(), message.get(), nullptr);
}

int IpcLink::call(SdBusSlot& slot, const char* method, const char* argument, sd_bus_message_handler_t handler,
                  void* data)
{
    sd_bus_slot* raw = nullptr;
    const int result =
        sd_bus_call_method_async(bus.get(), &raw, busName, busPath, busName, method, handler, data, "s", argument);
    slot.reset(raw);
    return result;
}

int IpcLink::fail(int result)
{
    if (result < 0)
        failure = result;
    return 0;
}

int IpcLink::onMatchInstalled(sd_bus_message* reply, void* data, sd_bus_error*)
{
    return linkOf(data).fail(isError(reply) ? -EIO : 0);
}

int IpcLink::onNames(sd_bus_message* reply, void* data, sd_bus_error*)
{
    auto& link = linkOf(data);
    int result = isError(reply) ? -EIO : sd_bus_message_enter_container(reply, 'a', "s");
    const char* name = "";
    while (result >= 0 && sd_bus_message_read_basic(reply, 's', &name) > 0)
        if (const int appType = link.typeOfName(name); appType >= 0)
            result = link.askForOwner(appType);
    link.listed = true;
    return link.fail(result < 0 ? result : link.claimOnceAllAreKnown());
}

int IpcLink::askForOwner(int appType)
{
    auto& lookup = lookups[static_cast<std::size_t>(appType)];
    lookup.asksOwner = true;
    return call(lookup.ownerCall, "GetNameOwner", nameOfType(appType).c_str(), onOwner, &lookup);
}

int IpcLink::onOwner(sd_bus_message* reply, void* data, sd_bus_error*)
{
    auto& lookup = *static_cast<Lookup*>(data);
    lookup.asksOwner = false;
    // An error says that the owner has gone in between.
    const char* connection = "";
    int result = isError(reply) ? 0 : sd_bus_message_read_basic(reply, 's', &connection);
    if (result >= 0)
        result = lookup.link->ownerChanged(lookup.appType, connection);
    return lookup.link->fail(result);
}

int IpcLink::onNameOwnerChanged(sd_bus_message* message, void* data, sd_bus_error*)
{
    auto& link = linkOf(data);
    const char* name = "";
    const char* before = "";
    const char* now = "";
    int result = sd_bus_message_read(message, "sss", &name, &before, &now);
    if (const int appType = link.typeOfName(name); result >= 0 && appType >= 0)
        result = link.ownerChanged(appType, now);
    return link.fail(result);
}

int IpcLink::ownerChanged(int appType, const char* connection)
{
    auto& lookup = lookups[static_cast<std::size_t>(appType)];
    if (lookup.connection != connection)
    {
        lookup.connection = connection;
        lookup.processCall.reset();
        seats.setOwner(appType, connection);
        if (*connection != '\0')
            if (const int result =
                    call(lookup.processCall, "GetConnectionUnixProcessID", connection, onProcess, &lookup);
                result < 0)
                return result;
    }
    return claimOnceAllAreKnown();
}

int IpcLink::onProcess(sd_bus_message* reply, void* data, sd_bus_error*)
{
    auto& lookup = *static_cast<Lookup*>(data);
    std::uint32_t process = 0;
    if (!isError(reply) && sd_bus_message_read_basic(reply, 'u', &process) > 0)
        lookup.link->seats.setProcess(lookup.appType, lookup.connection, static_cast<int>(process));
    else if (sd_bus_message_is_method_error(reply, processUnknown) > 0)
        lookup.link->seats.setProcess(lookup.appType, lookup.connection, -1);
    else
        return lookup.link->fail(lookup.link->ownerChanged(lookup.appType, "")); // It has gone before it was asked for.
    return lookup.link->fail(lookup.link->claimOnceAllAreKnown());
}

int IpcLink::claimOnceAllAreKnown()
{
    const bool asking = std::any_of(lookups.begin(), lookups.end(), [](const Lookup& each) { return each.asksOwner; });
    if (claimed || !listed || asking || seats.isChecking())
        return 0;
    claimed = true;
    sd_bus_slot* slot = nullptr;
    const int result =
        sd_bus_request_name_async(bus.get(), &slot, nameOfType(self).c_str(), SD_BUS_NAME_QUEUE, onNameClaimed, this);
    claimCall.reset(slot);
    return result;
}

int IpcLink::onNameClaimed(sd_bus_message* reply, void* data, sd_bus_error*)
{
    auto& link = linkOf(data);
    std::uint32_t answer = 0;
    if (isError(reply))
        return link.fail(-EACCES);
    if (const int result = sd_bus_message_read_basic(reply, 'u', &answer); result < 0)
        return link.fail(result);
    link.claimAnswered = true;
    link.nameOwned = link.nameOwned || answer == primaryOwner;
    if (!link.nameOwned)
        logger().error("%s has another owner; it is taken over when that one goes", link.nameOfType(link.self).c_str());
    return 0;
}

int IpcLink::onNameAcquired(sd_bus_message*, void* data, sd_bus_error*)
{
    linkOf(data).nameOwned = true;
    return 0;
}

int IpcLink::fileMessage(sd_bus_message* source)
{
    auto message = RemoteMessage::obtain();
    if (const int result = IpcWire::read(source, *message); result < 0)
        return result;
    seats.received(sd_bus_message_get_sender(source), std::move(message));
    return 0;
}

int IpcLink::onPost(sd_bus_message* message, void* data, sd_bus_error*)
{
    const int result = linkOf(data).fileMessage(message);
    // Only a caller that asked for a reply gets one.
    return result < 0 ? result : sd_bus_reply_method_return(message, "");
}

int IpcLink::onBroadcastText(sd_bus_message* message, void* data, sd_bus_error*)
{
    const char* text = "";
    if (const int result = sd_bus_message_read_basic(message, 's', &text); result < 0)
        return result;
    auto& link = linkOf(data);
    if (link.seats.mayAct(sd_bus_message_get_sender(message)))
        link.events.emplace_back(juce::String::fromUTF8(text));
    return sd_bus_reply_method_return(message, "");
}

int IpcLink::onMessageSignal(sd_bus_message* message, void* data, sd_bus_error*)
{
    auto& link = linkOf(data);
    const char* sender = sd_bus_message_get_sender(message);
    // Nobody but the engine speaks to all.
    if (sender != nullptr && link.seats.typeOf(sender) == Pubhead::AppMain)
        link.fileMessage(message);
    return 0;
}

std::string IpcLink::nameOfType(int appType) const
{
    return std::string(namePrefix) + nameOf(appType);
}

int IpcLink::typeOfName(const char* name) const
{
    for (int appType = 0; appType < IpcSeats::count; ++appType)
        if (appType != self && nameOfType(appType) == name)
            return appType;
    return -1;
}

} // namespace Platform
