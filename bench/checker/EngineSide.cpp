#include "bench/checker/EngineSide.h"

#include "platform/channel/linux/IpcWire.h"

#include <cstring>
#include <string_view>
#include <vector>

namespace Checker
{

using namespace Platform;

namespace
{

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

EngineSide& sideOf(void* data)
{
    return *static_cast<EngineSide*>(data);
}

std::string textOf(int result)
{
    return result < 0 ? std::string("the check's bus: ") + std::strerror(-result) : "";
}

std::string engineName()
{
    return std::string(busNamePrefix) + Pubhead::appTypeName(Pubhead::AppMain);
}

} // namespace

const sd_bus_vtable EngineSide::vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Post", SD_BUS_ARGS("i", what, "i", arg1, "i", arg2, "a{sv}", bundle), SD_BUS_NO_RESULT,
                            EngineSide::onPost, SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
    SD_BUS_SIGNAL_WITH_ARGS("Message", SD_BUS_ARGS("i", what, "i", arg1, "i", arg2, "a{sv}", bundle), 0),
    SD_BUS_VTABLE_END
};

std::string EngineSide::connect(const std::string& address)
{
    int result = prepareBus(bus, address);
    if (result >= 0)
        result = sd_bus_start(bus.get());
    sd_bus_slot* slot = nullptr;
    if (result >= 0)
        result = sd_bus_add_object_vtable(bus.get(), &slot, endpointPath, endpointInterface, vtable, this);
    object.reset(slot);
    slot = nullptr;
    const auto rule = std::string("type='signal',sender='") + busName + "',interface='" + busName +
                      "',member='NameOwnerChanged',arg0namespace='com.corvane'";
    if (result >= 0)
        result = sd_bus_add_match(bus.get(), &slot, rule.c_str(), onNameOwnerChanged, this);
    owners.reset(slot);
    const char* unique = "";
    if (result >= 0)
        result = sd_bus_get_unique_name(bus.get(), &unique);
    connection = unique;
    return result < 0 ? textOf(result) : fetchOwners();
}

std::string EngineSide::fetchOwners()
{
    sd_bus_message* raw = nullptr;
    int result = sd_bus_call_method(bus.get(), busName, busPath, busName, "ListNames", nullptr, &raw, nullptr);
    const SdBusMessage names(raw);
    if (result >= 0)
        result = sd_bus_message_enter_container(raw, 'a', "s");
    std::vector<std::string> ours;
    for (const char* name = nullptr; result >= 0 && (result = sd_bus_message_read_basic(raw, 's', &name)) > 0;)
        if (std::string_view(name).starts_with(busNamePrefix))
            ours.emplace_back(name);
    for (const auto& name : ours)
    {
        sd_bus_message* reply = nullptr;
        // It may have gone meanwhile.
        const int found = sd_bus_call_method(bus.get(), busName, busPath, busName, "GetNameOwner", nullptr, &reply, "s",
                                             name.c_str());
        const SdBusMessage kept(reply);
        const char* owner = "";
        if (found >= 0 && sd_bus_message_read_basic(reply, 's', &owner) > 0)
            listener.onOwner(name, owner);
    }
    return textOf(result);
}

std::string EngineSide::ownName()
{
    return textOf(sd_bus_request_name(bus.get(), engineName().c_str(), SD_BUS_NAME_QUEUE));
}

std::string EngineSide::send(int made, sd_bus_message* message, const Fill& content, bool isAsked)
{
    const SdBusMessage kept(message);
    const int filled = made < 0 ? made : content(message);
    if (filled < 0 || !isAsked)
        return textOf(filled < 0 ? filled : sd_bus_send(bus.get(), message, nullptr));
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_async(bus.get(), &slot, message, onAnswer, this, 0);
    asked.reset(slot);
    return textOf(result);
}

std::string EngineSide::tell(const std::string& target, const Fill& content, bool isAsked)
{
    sd_bus_message* message = nullptr;
    const int made =
        sd_bus_message_new_method_call(bus.get(), &message, target.c_str(), endpointPath, endpointInterface, "Post");
    return send(made, message, content, isAsked);
}

std::string EngineSide::tellAll(const Fill& content)
{
    sd_bus_message* message = nullptr;
    const int made = sd_bus_message_new_signal(bus.get(), &message, endpointPath, endpointInterface, "Message");
    return send(made, message, content, false);
}

int EngineSide::process()
{
    return sd_bus_process(bus.get(), nullptr);
}

std::string EngineSide::flush()
{
    return textOf(sd_bus_flush(bus.get()));
}

int EngineSide::onPost(sd_bus_message* message, void* data, sd_bus_error*)
{
    const auto received = RemoteMessage::obtain();
    if (const int result = IpcWire::read(message, *received); result < 0)
        return result;
    sideOf(data).listener.onMessage(sd_bus_message_get_sender(message), *received);
    return sd_bus_reply_method_return(message, "");
}

int EngineSide::onNameOwnerChanged(sd_bus_message* message, void* data, sd_bus_error*)
{
    const char* name = "";
    const char* before = "";
    const char* now = "";
    if (const int result = sd_bus_message_read(message, "sss", &name, &before, &now); result < 0)
        return result;
    sideOf(data).listener.onOwner(name, now);
    return 0;
}

int EngineSide::onAnswer(sd_bus_message* reply, void* data, sd_bus_error*)
{
    std::string why;
    // Whatever else goes wrong in a program, it has heard the message.
    for (const auto* name : { SD_BUS_ERROR_UNKNOWN_OBJECT, SD_BUS_ERROR_UNKNOWN_INTERFACE, SD_BUS_ERROR_UNKNOWN_METHOD,
                              SD_BUS_ERROR_INVALID_ARGS, SD_BUS_ERROR_INVALID_SIGNATURE })
        if (sd_bus_message_is_method_error(reply, name) > 0)
            why = sd_bus_message_get_error(reply)->message != nullptr ? sd_bus_message_get_error(reply)->message : name;
    sideOf(data).listener.onAsked(why);
    return 0;
}

} // namespace Checker
