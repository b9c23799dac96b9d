#include "bench/unit/ProgramWatch.h"

#include "bench/program/Describe.h"
#include "bench/text/Names.h"
#include "bench/unit/ProcessHandle.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/channel/linux/IpcWire.h"

#include <cstring>
#include <fstream>
#include <poll.h>

namespace Bench
{

using namespace Platform;
using namespace Pubhead;
using namespace std::chrono_literals;

namespace
{

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr std::chrono::milliseconds retryPause = 100ms;
constexpr std::chrono::microseconds answerLimit = 5s;

std::string nameOf(int appType)
{
    return std::string(busNamePrefix) + appTypeName(appType);
}

/** What the engine has started the process for, the value of its --command-line; "" for nothing. */
std::string startedFor(int pid)
{
    std::ifstream arguments("/proc/" + std::to_string(pid) + "/cmdline");
    for (std::string each; std::getline(arguments, each, '\0');)
        if (each == "--command-line")
            return std::getline(arguments, each, '\0') ? each : "";
    return {};
}

/** Handles or takes what has come; false when the connection is gone. */
template <typename Take>
bool process(sd_bus* bus, Take&& take)
{
    for (;;)
    {
        sd_bus_message* raw = nullptr;
        const int result = sd_bus_process(bus, &raw);
        const SdBusMessage message(raw);
        if (result <= 0)
            return result == 0;
        if (message != nullptr)
            take(message.get());
    }
}

} // namespace

ProgramWatch::ProgramWatch(Programs& programsToTell, Journal& journalToUse)
    : programs(programsToTell)
    , journal(journalToUse)
{
}

void ProgramWatch::start(std::string busAddress, std::set<int> programsToWatch)
{
    address = std::move(busAddress);
    watched = std::move(programsToWatch);
    wakeUp.clear();
    if (!watched.empty())
        thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

void ProgramWatch::stop()
{
    thread.request_stop();
    wakeUp.set();
    if (thread.joinable())
        thread.join();
}

void ProgramWatch::run(const std::stop_token& stop)
{
    while (!stop.stop_requested())
    {
        if (bus == nullptr)
            connect();
        if (bus != nullptr)
            handleTraffic();
        checkForEnds();
        waitForNews();
    }
    forgetBus();
    processes.clear();
}

void ProgramWatch::connect()
{
    if (prepareBus(bus, address) < 0 || sd_bus_start(bus.get()) < 0 ||
        sd_bus_set_method_call_timeout(bus.get(), answerLimit.count()) < 0)
        return forgetBus();
    if (const int result = listen(); result < 0)
    {
        monitor.reset();
        sd_bus_slot* slot = nullptr;
        if (sd_bus_match_signal(
                bus.get(), &slot, busName, busPath, busName, "NameOwnerChanged",
                [](sd_bus_message* message, void* self, sd_bus_error*)
                {
                    static_cast<ProgramWatch*>(self)->ownerChanged(message);
                    return 0;
                },
                this) < 0)
            return forgetBus(); // it is not there, or going
        ownerMatch.reset(slot);
        if (!std::exchange(refusalTold, true))
            journal.add("bus", std::string("lets nobody listen (") + std::strerror(-result) +
                                   "): pages of programs that are not the bench's own are not seen");
    }
    // Who came before the listening began.
    for (const int appType : watchedNames())
    {
        sd_bus_message* raw = nullptr;
        const char* owner = nullptr;
        const int found = sd_bus_call_method(bus.get(), busName, busPath, busName, "GetNameOwner", nullptr, &raw, "s",
                                             nameOf(appType).c_str());
        const SdBusMessage answer(raw);
        if (found >= 0 && sd_bus_message_read(answer.get(), "s", &owner) >= 0)
            setOwner(appType, owner);
    }
}

int ProgramWatch::listen()
{
    int result = prepareBus(monitor, address);
    if (result >= 0)
        result = sd_bus_set_monitor(monitor.get(), 1);
    if (result >= 0)
        result = sd_bus_start(monitor.get());
    sd_bus_message* raw = nullptr;
    if (result >= 0)
        result = sd_bus_message_new_method_call(monitor.get(), &raw, busName, busPath,
                                                "org.freedesktop.DBus.Monitoring", "BecomeMonitor");
    const SdBusMessage call(raw);
    if (result >= 0)
        result = sd_bus_message_append(
            call.get(), "asu", 2, "interface='com.corvane.Endpoint'",
            "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0namespace='com.corvane'", 0);
    return result >= 0 ? sd_bus_call(monitor.get(), call.get(), answerLimit.count(), nullptr, nullptr) : result;
}

void ProgramWatch::handleTraffic()
{
    const auto ignore = [](sd_bus_message*) {};
    if (!process(bus.get(), ignore) ||
        (monitor != nullptr && !process(monitor.get(), [this](sd_bus_message* message) { onMonitored(message); })))
        forgetBus();
}

void ProgramWatch::forgetBus()
{
    ownerMatch.reset();
    monitor.reset();
    bus.reset();
    connections.clear();
}

void ProgramWatch::onMonitored(sd_bus_message* message)
{
    const char* member = sd_bus_message_get_member(message);
    if (member == nullptr)
        return;
    if (std::strcmp(member, "NameOwnerChanged") == 0)
        return ownerChanged(message);
    RemoteMessage heard;
    if (IpcWire::read(message, heard) < 0)
        return; // not for the endpoints' programs
    const int from = typeOf(sd_bus_message_get_sender(message));
    const int to = typeOf(sd_bus_message_get_destination(message));
    if (watched.contains(from) && to == AppMain)
        onAnswer(from, heard);
    else if (from == AppMain && watched.contains(to))
        onOrder(to, heard);
    else if (from == AppMain && heard.what == RMSG_ENGINE_STARTED)
        programs.engineStarted();
}

void ProgramWatch::onAnswer(int appType, const RemoteMessage& message)
{
    switch (message.what)
    {
    case RMSG_HEARTBEAT_REPLY:
        programs.report(appType, { .event = "heartbeat" });
        break;
    case RMSG_PAGE_SHOW_READY:
        programs.report(appType, { .event = "shown", .page = message.arg1 });
        break;
    case RMSG_PAGE_HIDE_READY:
        programs.report(appType, { .event = "hidden", .page = message.arg1 });
        break;
    case RMSG_PAGE_TOP_SHOWN:
        programs.report(appType, { .event = "confirmed", .page = message.arg1 });
        break;
    default:
        programs.report(
            appType,
            { .event = "says",
              .detail = (remoteMessageName(message.what) + " " + BenchProgram::describe(message)).toStdString() });
        break;
    }
}

void ProgramWatch::onOrder(int appType, const RemoteMessage& message)
{
    switch (message.what)
    {
    case RMSG_APP_HELLO_ACK:
        programs.report(appType, { .event = "connected" });
        break;
    case RMSG_PAGE_SHOW:
    case RMSG_PAGE_HIDE:
    case RMSG_HEARTBEAT:
        break; // its answer tells
    case RMSG_PAGE_COVERED:
        programs.report(appType, { .event = "covered", .page = message.arg1 });
        break;
    case RMSG_COMMAND_LINE:
        onCommandLine(appType, message.bundle);
        break;
    case RMSG_SOURCE_STOP:
        programs.report(appType, { .event = "stop" });
        break;
    case RMSG_PAGE_NOTIFY:
        programs.report(appType, { .event = "power-off", .detail = pageName(message.arg1) });
        break;
    case RMSG_KEY:
        programs.report(appType, { .event = "key", .detail = keyText(message.arg1, message.arg2) });
        break;
    default:
        programs.report(appType, { .event = "message", .detail = BenchProgram::describe(message).toStdString() });
        break;
    }
}

void ProgramWatch::onCommandLine(int appType, const Bundle::Ptr& bundle)
{
    const auto line = RemoteObjFormat::generateCommandLine(bundle);
    programs.report(appType, { .event = "command-line",
                               .detail = line != nullptr ? BenchProgram::describe(*line).toStdString() : "malformed" });
}

void ProgramWatch::ownerChanged(sd_bus_message* message)
{
    const char *name = nullptr, *before = nullptr, *now = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &now) < 0)
        return;
    for (const int appType : watchedNames())
        if (nameOf(appType) == name)
            setOwner(appType, now);
}

void ProgramWatch::setOwner(int appType, const std::string& connection)
{
    if (connection.empty())
    {
        connections.erase(appType);
        return;
    }
    if (std::exchange(connections[appType], connection) == connection || appType == AppMain)
        return;
    const int pid = processOf(bus.get(), connection);
    if (const auto former = processes.find(appType); former != processes.end())
    {
        if (former->second.pid == pid)
            return; // it may only have lost the bus
        processes.erase(former);
        programs.went(appType);
    }
    // One that has ended already has come and gone unseen.
    if (auto handle = openProcess(pid))
    {
        processes.emplace(appType, Process { pid, std::move(handle) });
        programs.came(appType, pid);
        if (const auto line = startedFor(pid); !line.empty())
            onCommandLine(appType, CmdLineHelper::parseCommandLine(line));
    }
}

std::set<int> ProgramWatch::watchedNames() const
{
    auto names = watched;
    names.insert(AppMain);
    return names;
}

int ProgramWatch::typeOf(const char* connection) const
{
    if (connection != nullptr)
        for (const auto& [appType, owner] : connections)
            if (owner == connection || nameOf(appType) == connection)
                return appType;
    return AppUnknown;
}

void ProgramWatch::checkForEnds()
{
    std::erase_if(processes,
                  [this](const auto& each)
                  {
                      const bool ended = isReadable(each.second.handle.get());
                      if (ended)
                          programs.went(each.first);
                      return ended;
                  });
}

void ProgramWatch::waitForNews()
{
    std::vector<pollfd> each { { wakeUp.getDescriptor(), POLLIN, 0 } };
    for (const auto* one : { &bus, &monitor })
        if (*one != nullptr)
            each.push_back({ sd_bus_get_fd(one->get()), static_cast<short>(sd_bus_get_events(one->get())), 0 });
    for (const auto& [appType, process] : processes)
        each.push_back({ process.handle.get(), POLLIN, 0 });
    // On a bus every call has been answered.
    ::poll(each.data(), each.size(), bus == nullptr ? static_cast<int>(retryPause.count()) : -1);
}

} // namespace Bench
