// A source program for the AUX input, to begin with. All it lacks is a picture: put it into show().
#include "headunit/protocol.h"

#include <chrono>
#include <iostream>
#include <nlohmann/json.hpp>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace
{
using Clock = std::chrono::steady_clock;
using Json = nlohmann::json;
constexpr std::chrono::milliseconds away { HU_engineAwayMs };
sd_bus* bus = nullptr;
Json first;                                     // what it was started for, until the engine knows it
Clock::time_point giveUp = Clock::now() + away; // without the engine
int shown = HU_NUM_OF_PAGES;                    // as the engine was told; a page that was hidden may still be seen

/** Puts the page on the screen, in place of the one before it; HU_NUM_OF_PAGES takes that off. */
void show(int page)
{
    std::cout << "on the screen: page " << (shown = page) << std::endl;
}

void post(int what, int arg1)
{
    sd_bus_call_method_async(bus, nullptr, HU_BUS_NAME(AppMain), HU_ENDPOINT_PATH, HU_ENDPOINT_INTERFACE, "Post",
                             nullptr, nullptr, "iiia{sv}", what, arg1, 0, 0);
}

bool sayHello()
{
    giveUp = Clock::now() + away;
    post(HU_RMSG_APP_HELLO, HU_AppAuxIn);
    return true;
}

/** A bundle as JSON, which the command line of the start is already; only what a command line may hold. */
Json readBundle(sd_bus_message* from)
{
    auto bundle = Json::object();
    sd_bus_message_enter_container(from, 'a', "{sv}");
    for (const char* text; sd_bus_message_enter_container(from, 'e', "sv") > 0; sd_bus_message_exit_container(from))
    {
        int number = 0;
        sd_bus_message_read_basic(from, 's', &text);
        const std::string key = text;
        if (sd_bus_message_read(from, "v", "i", &number) >= 0)
            bundle[key] = number;
        else if (sd_bus_message_read(from, "v", "b", &number) >= 0)
            bundle[key] = number != 0;
        else if (sd_bus_message_read(from, "v", "s", &text) >= 0)
            bundle[key] = text;
        else if (sd_bus_message_enter_container(from, 'v', "a{sv}") >= 0)
            bundle[key] = readBundle(from), sd_bus_message_exit_container(from);
        else
            sd_bus_message_skip(from, "v");
    }
    sd_bus_message_exit_container(from);
    return bundle;
}

void obey(Json bundle)
{
    auto line = bundle.is_object() ? bundle[HU_commandLineKey] : Json();
    if (!line.is_object() || !line[HU_typeKey].is_string() || !line[HU_pageKey].is_number_integer())
        return;
    const std::string type = line[HU_typeKey];
    const int page = line[HU_pageKey];
    std::cout << "told: " << type << " " << page
              << std::endl; // from a sourceEnter to its sourceExit the input is heard
    if (type == HU_pageShow || (type == HU_sourceEnter && line[HU_onTopKey] == true))
        post(HU_RMSG_PAGE_REQUEST_SHOW, page);
    if (type == HU_pageHide && page == shown && page != HU_NUM_OF_PAGES)
        post(HU_RMSG_PAGE_TOP_SHOWN, page);
}

void hear(int what, int arg1, sd_bus_message* message)
{
    switch (what)
    {
    case HU_RMSG_APP_HELLO_ACK:
        giveUp = Clock::time_point::max();
        return obey(std::exchange(first, {}));
    case HU_RMSG_ENGINE_STARTED: // its screen is empty
        show(HU_NUM_OF_PAGES);
        sayHello();
        return;
    case HU_RMSG_HEARTBEAT:
        return post(HU_RMSG_HEARTBEAT_REPLY, HU_AppAuxIn);
    case HU_RMSG_COMMAND_LINE:
        return obey(readBundle(message));
    case HU_RMSG_PAGE_SHOW:
        show(arg1);
        return post(HU_RMSG_PAGE_SHOW_READY, arg1);
    case HU_RMSG_PAGE_HIDE:
        shown = arg1 == shown ? HU_NUM_OF_PAGES : shown; // seen until the next one is there
        return post(HU_RMSG_PAGE_HIDE_READY, arg1);
    case HU_RMSG_PAGE_COVERED:
        if (shown == HU_NUM_OF_PAGES)
            show(HU_NUM_OF_PAGES);
        return;
    case HU_RMSG_KEY:
        std::cout << "key " << arg1 << std::endl;
        return;
    case HU_RMSG_PAGE_NOTIFY:
        return post(HU_RMSG_STATE_TO_SYSTEM, arg1);
    case HU_RMSG_SOURCE_STOP:
        giveUp = {};
    }
}

int onMessage(sd_bus_message* message, void*, sd_bus_error*)
{
    int what = 0, arg1 = 0, arg2 = 0;
    if (sd_bus_message_is_signal(message, nullptr, "NameOwnerChanged") > 0)
        sayHello(); // to nobody when the engine has gone
    else if (sd_bus_message_read(message, "iii", &what, &arg1, &arg2) >= 0)
        hear(what, arg1, message);
    return sd_bus_message_is_method_call(message, nullptr, nullptr) > 0 ? sd_bus_reply_method_return(message, "") : 0;
}

const sd_bus_vtable endpoint[] = { SD_BUS_VTABLE_START(0),
                                   SD_BUS_METHOD("Post", "iiia{sv}", "", onMessage, SD_BUS_VTABLE_UNPRIVILEGED),
                                   SD_BUS_VTABLE_END };

bool connect()
{
    const char* engineComesOrGoes = "type='signal',member='NameOwnerChanged',arg0='" HU_BUS_NAME(AppMain) "'";
    const char* toAll = "type='signal',interface='" HU_ENDPOINT_INTERFACE "',member='Message'";
    return sd_bus_open_user(&bus) >= 0 && // the bus that the engine names in the environment
           sd_bus_add_object_vtable(bus, nullptr, HU_ENDPOINT_PATH, HU_ENDPOINT_INTERFACE, endpoint, nullptr) >= 0 &&
           sd_bus_add_match(bus, nullptr, toAll, onMessage, nullptr) >= 0 &&
           sd_bus_add_match(bus, nullptr, engineComesOrGoes, onMessage, nullptr) >= 0 &&
           sd_bus_request_name(bus, HU_BUS_NAME(AppAuxIn), 0) >= 0 && sayHello();
}

} // namespace

int main(int argc, char** argv)
{
    constexpr int pauseUs = 100'000;
    first = argc == 3 ? Json::parse(argv[2], nullptr, false) : Json(); // behind --command-line
    while (Clock::now() < giveUp)
    {
        if (bus == nullptr ? connect() : sd_bus_process(bus, nullptr) >= 0 && sd_bus_wait(bus, pauseUs) >= 0)
            continue;
        bus = sd_bus_close_unref(bus); // the bus has gone, or is not there yet
        giveUp = std::min(giveUp, Clock::now() + away);
        usleep(pauseUs);
    }
    sd_bus_flush_close_unref(bus); // the name goes with it
}
