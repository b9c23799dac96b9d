#include "platform/linux/IpcChannel.h"

#include "platform/Configuration.h"
#include "platform/Logger.h"
#include "platform/Window.h"
#include "platform/linux/IpcWire.h"

#include <algorithm>
#include <cstring>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Platform
{

namespace
{

constexpr const char* file = "platform/linux/IpcChannel";
constexpr const char* tag = "MsgSession";
constexpr const char* namePrefix = "com.corvane.";
constexpr const char* endpointPath = "/com/corvane/Endpoint";
constexpr const char* endpointInterface = "com.corvane.Endpoint";
constexpr const char* broadcastPath = "/com/corvane/Broadcast";
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

constexpr int firstPauseMs = 100;
constexpr int longestPauseMs = 5000;

std::string busAddress()
{
    if (const auto& configured = Configuration::get().ipcAddress; configured.isNotEmpty())
        return configured.toStdString();
    if (const char* session = std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        return session;
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"))
        return std::string("unix:path=") + runtime + "/bus";
    return {};
}

/** A question to the bus about one connection, answered later. */
struct Query
{
    IpcChannel* channel;
    int appType;
    std::string connection;
};

void deleteQuery(void* query)
{
    delete static_cast<Query*>(query);
}

} // namespace

const sd_bus_vtable IpcChannel::vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Post", "iiia{sv}", "", IpcChannel::onPost, SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
    SD_BUS_METHOD("Broadcast", "s", "", IpcChannel::onBroadcastText,
                  SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
    SD_BUS_SIGNAL("Message", "iiia{sv}", 0),
    SD_BUS_VTABLE_END
};

/** Never destroyed: senders may be running until the process ends. */
IpcChannel& IpcChannel::get()
{
    static IpcChannel& channel = *new IpcChannel;
    return channel;
}

IpcChannel::IpcChannel()
    : pauseMs(firstPauseMs)
    , wakeDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

void IpcChannel::config(int selfIndex, const char* (*nameOf)(int))
{
    const std::lock_guard guard(lock);
    self = selfIndex;
    resolver = nameOf;
}

bool IpcChannel::open(IMsgProc& newReceiver)
{
    if (thread.joinable())
        return false;
    receiver = &newReceiver;
    stopping = false;
    lossLogged = false;
    pauseMs = firstPauseMs;
    const bool connected = connect();
    thread = std::thread([this] { run(); });
    if (self == Pubhead::AppMain)
        startWindowMessages(resolver(self),
                            [this](std::int32_t message, std::int32_t wParam, std::int32_t lParam)
                            {
                                {
                                    const std::lock_guard guard(lock);
                                    events.emplace_back(IpcWindowMessage { message, wParam, lParam });
                                }
                                wake();
                            });
    return connected;
}

void IpcChannel::close()
{
    if (!thread.joinable())
        return;
    stopWindowMessages();
    stopping = true;
    wake();
    thread.join();
    const std::lock_guard guard(lock);
    if (bus != nullptr)
        sd_bus_flush(bus.get());
    bus.reset();
    seats.clearOwners();
    seats.forgetExpectations();
    events.clear();
    receiver = nullptr;
}

void IpcChannel::run()
{
    pthread_setname_np(pthread_self(), "ipc");
    while (!stopping)
    {
        if (bus == nullptr && !connect())
        {
            pause();
            continue;
        }
        process();
        deliver();
        waitForTraffic();
    }
}

bool IpcChannel::connect()
{
    const std::lock_guard guard(lock);
    const auto address = busAddress();
    sd_bus* raw = nullptr;
    int result = address.empty() ? -ENOENT : sd_bus_new(&raw);
    bus.reset(raw);
    if (result >= 0)
        result = sd_bus_set_address(raw, address.c_str());
    if (result >= 0)
        result = sd_bus_set_bus_client(raw, 1);
    if (result >= 0)
        result = sd_bus_start(raw);
    // The order matters: who comes after the watch began is reported, who was there before is listed.
    for (const auto step : { &IpcChannel::exportObject, &IpcChannel::watchNames, &IpcChannel::watchBroadcasts,
                             &IpcChannel::claimName })
        if (result >= 0)
            result = (this->*step)();
    if (result >= 0)
        return true;
    bus.reset();
    if (!std::exchange(lossLogged, true))
        Logger::getInstance()->logError(file, __LINE__, tag, "no message bus at \"%s\": %s; trying again",
                                        address.c_str(), std::strerror(-result));
    return false;
}

int IpcChannel::exportObject()
{
    return sd_bus_add_object_vtable(bus.get(), nullptr, endpointPath, endpointInterface, vtable, this);
}

int IpcChannel::watchNames()
{
    const auto rule = std::string("type='signal',sender='") + busName + "',interface='" + busName +
                      "',member='NameOwnerChanged',arg0namespace='com.corvane'";
    if (const int result = sd_bus_add_match_async(bus.get(), nullptr, rule.c_str(), onNameOwnerChanged, nullptr, this);
        result < 0)
        return result;
    return sd_bus_call_method_async(bus.get(), nullptr, busName, busPath, busName, "ListNames", onNameList, this, "");
}

int IpcChannel::watchBroadcasts()
{
    // The engine is the one that broadcasts; it does not listen to itself.
    if (self == Pubhead::AppMain)
        return 0;
    const auto rule = "type='signal',sender='" + nameOfType(Pubhead::AppMain) + "',interface='" + endpointInterface +
                      "',member='Message'";
    return sd_bus_add_match_async(bus.get(), nullptr, rule.c_str(), onMessageSignal, nullptr, this);
}

int IpcChannel::claimName()
{
    return sd_bus_request_name_async(bus.get(), nullptr, nameOfType(self).c_str(), 0, onNameClaimed, this);
}

int IpcChannel::onNameClaimed(sd_bus_message* reply, void* data, sd_bus_error*)
{
    auto& channel = *static_cast<IpcChannel*>(data);
    if (sd_bus_message_is_method_error(reply, nullptr) > 0)
    {
        Logger::getInstance()->logError(file, __LINE__, tag, "%s cannot be owned: %s",
                                        channel.nameOfType(channel.self).c_str(), sd_bus_message_get_error(reply)->message);
        return 0;
    }
    juce::uint32 outcome = 0;
    constexpr juce::uint32 primaryOwner = 1;
    if (sd_bus_message_read(reply, "u", &outcome) >= 0 && outcome != primaryOwner)
        Logger::getInstance()->logError(file, __LINE__, tag, "%s has another owner",
                                        channel.nameOfType(channel.self).c_str());
    return 0;
}

void IpcChannel::process()
{
    const std::lock_guard guard(lock);
    int result = 0;
    do
        result = bus == nullptr ? 0 : sd_bus_process(bus.get(), nullptr);
    while (result > 0 && !stopping);
    if (result < 0)
        disconnect(-result);
    else if (bus != nullptr && sd_bus_is_ready(bus.get()) > 0)
    {
        pauseMs = firstPauseMs;
        lossLogged = false;
    }
}

void IpcChannel::disconnect(int error)
{
    if (!std::exchange(lossLogged, true))
        Logger::getInstance()->logError(file, __LINE__, tag, "the message bus is gone: %s; trying again",
                                        std::strerror(error));
    bus.reset();
    seats.clearOwners();
}

void IpcChannel::deliver()
{
    for (;;)
    {
        std::deque<IpcEvent> batch;
        {
            const std::lock_guard guard(lock);
            batch.swap(events);
        }
        if (batch.empty())
            return;
        for (auto& event : batch)
            if (!stopping)
                deliverOne(event);
    }
}

void IpcChannel::deliverOne(IpcEvent& event)
{
    struct Visitor
    {
        IMsgProc& target;
        int self;

        void operator()(RemoteMessage::Ptr& message) const { target.onRemoteMessage(std::move(message)); }
        void operator()(const IpcPresence& presence) const
        {
            if (presence.appType != self)
                target.onPresence(presence.appType, presence.present);
        }
        void operator()(const IpcWindowMessage& message) const
        {
            target.onWindowMessage(message.message, message.wParam, message.lParam);
        }
        void operator()(const juce::String& text) const { target.onBroadcast(text); }
    };
    std::visit(Visitor { *receiver, self }, event);
}

void IpcChannel::waitForTraffic()
{
    pollfd descriptors[2] = { { wakeDescriptor, POLLIN, 0 }, { -1, 0, 0 } };
    int timeout = -1;
    {
        const std::lock_guard guard(lock);
        if (!events.empty())
            return;
        if (bus != nullptr)
        {
            descriptors[1] = { sd_bus_get_fd(bus.get()), static_cast<short>(sd_bus_get_events(bus.get())), 0 };
            std::uint64_t due = 0;
            if (sd_bus_get_timeout(bus.get(), &due) > 0)
            {
                timespec now {};
                clock_gettime(CLOCK_MONOTONIC, &now);
                const auto nowUs = static_cast<std::uint64_t>(now.tv_sec) * 1000000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000;
                constexpr std::uint64_t longestUs = 60000000;
                timeout = due <= nowUs ? 0 : static_cast<int>((std::min(due - nowUs, longestUs) + 999) / 1000);
            }
        }
        else
            return;
    }
    poll(descriptors, 2, timeout);
    juce::uint64 wakes = 0;
    [[maybe_unused]] const auto count = read(wakeDescriptor, &wakes, sizeof(wakes));
}

void IpcChannel::pause()
{
    deliver();
    pollfd descriptor { wakeDescriptor, POLLIN, 0 };
    poll(&descriptor, 1, pauseMs);
    juce::uint64 wakes = 0;
    [[maybe_unused]] const auto count = read(wakeDescriptor, &wakes, sizeof(wakes));
    pauseMs = std::min(pauseMs * 2, longestPauseMs);
}

void IpcChannel::wake()
{
    const juce::uint64 one = 1;
    // A counter that is full wakes just as well.
    [[maybe_unused]] const auto count = write(wakeDescriptor, &one, sizeof(one));
}

std::string IpcChannel::nameOfType(int appType) const
{
    return std::string(namePrefix) + resolver(appType);
}

int IpcChannel::appTypeOfName(const char* name) const
{
    for (int appType = 0; appType < IpcSeats::count; ++appType)
        if (nameOfType(appType) == name)
            return appType;
    return -1;
}

int IpcChannel::onNameOwnerChanged(sd_bus_message* message, void* data, sd_bus_error*)
{
    const char* name = "";
    const char* oldOwner = "";
    const char* newOwner = "";
    if (sd_bus_message_read(message, "sss", &name, &oldOwner, &newOwner) >= 0)
        static_cast<IpcChannel*>(data)->ownerChanged(name, newOwner);
    return 0;
}

void IpcChannel::ownerChanged(const char* name, const char* connection)
{
    const int appType = appTypeOfName(name);
    if (appType < 0)
        return;
    seats.setOwner(appType, connection);
    if (*connection != '\0')
        askForProcess(appType, connection);
}

int IpcChannel::callBus(const char* member, const std::string& argument, sd_bus_message_handler_t handler, void* data,
                        sd_bus_destroy_t destroy)
{
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_method_async(bus.get(), &slot, busName, busPath, busName, member, handler, data, "s",
                                                argument.c_str());
    if (result < 0)
    {
        destroy(data);
        return result;
    }
    sd_bus_slot_set_destroy_callback(slot, destroy);
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
    return result;
}

void IpcChannel::askForProcess(int appType, const std::string& connection)
{
    callBus("GetConnectionUnixProcessID", connection, onProcess, new Query { this, appType, connection }, deleteQuery);
}

int IpcChannel::onProcess(sd_bus_message* reply, void* data, sd_bus_error*)
{
    const auto& query = *static_cast<Query*>(data);
    juce::uint32 pid = 0;
    const bool known = sd_bus_message_is_method_error(reply, nullptr) == 0 && sd_bus_message_read(reply, "u", &pid) >= 0;
    query.channel->seats.setProcess(query.appType, query.connection, known ? static_cast<int>(pid) : -1);
    return 0;
}

int IpcChannel::onNameList(sd_bus_message* reply, void* data, sd_bus_error*)
{
    auto& channel = *static_cast<IpcChannel*>(data);
    if (sd_bus_message_is_method_error(reply, nullptr) > 0 || sd_bus_message_enter_container(reply, 'a', "s") < 0)
        return 0;
    const char* name = nullptr;
    while (sd_bus_message_read_basic(reply, 's', &name) > 0)
        if (const int appType = channel.appTypeOfName(name); appType >= 0)
            channel.callBus("GetNameOwner", name, onNameOwner, new Query { &channel, appType, name }, deleteQuery);
    return 0;
}

int IpcChannel::onNameOwner(sd_bus_message* reply, void* data, sd_bus_error*)
{
    const auto& query = *static_cast<Query*>(data);
    const char* connection = "";
    if (sd_bus_message_is_method_error(reply, nullptr) == 0 && sd_bus_message_read(reply, "s", &connection) >= 0)
        query.channel->ownerChanged(query.connection.c_str(), connection);
    return 0;
}

int IpcChannel::onPost(sd_bus_message* message, void* data, sd_bus_error*)
{
    auto received = RemoteMessage::obtain();
    if (const int result = IpcWire::read(message, *received); result < 0)
        return result;
    static_cast<IpcChannel*>(data)->seats.received(sd_bus_message_get_sender(message), std::move(received));
    return 1;
}

int IpcChannel::onMessageSignal(sd_bus_message* message, void* data, sd_bus_error* error)
{
    onPost(message, data, error);
    return 0;
}

int IpcChannel::onBroadcastText(sd_bus_message* message, void* data, sd_bus_error*)
{
    const char* text = "";
    if (const int result = sd_bus_message_read_basic(message, 's', &text); result < 0)
        return result;
    static_cast<IpcChannel*>(data)->events.emplace_back(juce::String::fromUTF8(text));
    return 1;
}

bool IpcChannel::send(sd_bus_message* message)
{
    if (sd_bus_send(bus.get(), message, nullptr) < 0)
        return false;
    // What did not fit into the socket is written by the loop, which must learn of it.
    if ((sd_bus_get_events(bus.get()) & POLLOUT) != 0)
        wake();
    return true;
}

bool IpcChannel::post(int appType, const RemoteMessage& message)
{
    const std::lock_guard guard(lock);
    const auto connection = seats.connectionOf(appType);
    if (bus == nullptr || connection.empty())
        return false;
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(bus.get(), &raw, connection.c_str(), endpointPath, endpointInterface, "Post") < 0)
        return false;
    const SdBusMessage call(raw);
    return sd_bus_message_set_expect_reply(raw, 0) >= 0 && IpcWire::append(raw, message) >= 0 && send(raw);
}

bool IpcChannel::broadcast(const RemoteMessage& message)
{
    const std::lock_guard guard(lock);
    sd_bus_message* raw = nullptr;
    if (bus == nullptr || sd_bus_message_new_signal(bus.get(), &raw, endpointPath, endpointInterface, "Message") < 0)
        return false;
    const SdBusMessage signal(raw);
    return IpcWire::append(raw, message) >= 0 && send(raw);
}

bool IpcChannel::broadcastNamed(const juce::String& action, const Bundle::Ptr& bundle)
{
    const auto interface = action.upToLastOccurrenceOf(".", false, false).toStdString();
    const auto member = action.fromLastOccurrenceOf(".", false, false).toStdString();
    const std::lock_guard guard(lock);
    sd_bus_message* raw = nullptr;
    if (bus == nullptr || sd_bus_message_new_signal(bus.get(), &raw, broadcastPath, interface.c_str(), member.c_str()) < 0)
        return false;
    const SdBusMessage signal(raw);
    return IpcWire::append(raw, bundle) >= 0 && send(raw);
}

bool IpcChannel::isPresent(int appType)
{
    const std::lock_guard guard(lock);
    return seats.isPresent(appType);
}

int IpcChannel::ownerProcess(int appType)
{
    const std::lock_guard guard(lock);
    return seats.processOf(appType);
}

void IpcChannel::expectProcess(int appType, int pid)
{
    {
        const std::lock_guard guard(lock);
        seats.expectProcess(appType, pid);
    }
    wake();
}

} // namespace Platform
