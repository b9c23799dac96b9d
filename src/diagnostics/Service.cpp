#include "diagnostics/Service.h"

#include "diagnostics/Reports.h"
#include "diagnostics/Why.h"
#include "platform/base/Logger.h"
#include "platform/channel/Ipc.h"
#include "platform/config/Configuration.h"
#include "platform/record/Observer.h"

#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>

namespace Diagnostics
{

namespace
{

constexpr Platform::Log logger { "diagnostics/Service", "Diagnostics" };

constexpr std::chrono::seconds retryPause { 1 };
constexpr std::chrono::milliseconds tracePeriod { 100 };
constexpr int endLimitMs = 500; ///< longer than an observer waits for locks

struct Plain
{
    const char* method;
    Json (*report)();
};
constexpr Plain plainReports[] {
    { "State", Reports::state },     { "Pages", Reports::pages },       { "Programs", Reports::programs },
    { "Link", Reports::link },       { "Requests", Reports::requests }, { "Remote", Reports::remote },
    { "Dsp", Reports::dsp },         { "Groups", Reports::groups },     { "Queues", Reports::queues },
    { "Latency", Reports::latency }, { "Counters", Reports::counters },
};

std::string readText(sd_bus_message* message)
{
    const char* text = nullptr;
    if (sd_bus_message_read_basic(message, 's', &text) < 0)
        throw std::runtime_error("The call lacks a text.");
    return text;
}

Json jsonOf(const TraceSession::Summary& summary)
{
    Json answer { { "events", summary.events }, { "lost", summary.lost }, { "ms", summary.length.count() } };
    if (!summary.failure.empty())
        answer["failure"] = summary.failure;
    return answer;
}

} // namespace

const sd_bus_vtable Service::vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Version", "u", onVersion, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_METHOD_WITH_NAMES("State", "", , "a{sv}", SD_BUS_PARAM(state), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Pages", "", , "aa{sv}", SD_BUS_PARAM(pages), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Programs", "", , "aa{sv}", SD_BUS_PARAM(programs), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Requests", "", , "aa{sv}", SD_BUS_PARAM(requests), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Link", "", , "a{sv}", SD_BUS_PARAM(link), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Remote", "", , "a{sv}", SD_BUS_PARAM(remote), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Dsp", "", , "a{sv}", SD_BUS_PARAM(dsp), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Groups", "", , "aa{sv}", SD_BUS_PARAM(groups), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Queues", "", , "aa{sv}", SD_BUS_PARAM(queues), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Counters", "", , "aa{sv}", SD_BUS_PARAM(counters), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Latency", "", , "aa{sv}", SD_BUS_PARAM(latency), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Settings", "s", SD_BUS_PARAM(name), "aa{sv}", SD_BUS_PARAM(settings), onCall,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Why", "ss", SD_BUS_PARAM(subject) SD_BUS_PARAM(name), "a{sv}", SD_BUS_PARAM(explanation),
                             onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("SetLog", "ss", SD_BUS_PARAM(level) SD_BUS_PARAM(file), "", , onCall,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("StartTrace", "hu", SD_BUS_PARAM(file) SD_BUS_PARAM(seconds), "", , onCall,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("StopTrace", "", , "a{sv}", SD_BUS_PARAM(summary), onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL_WITH_NAMES("TraceEnded", "a{sv}", SD_BUS_PARAM(summary), 0),
    SD_BUS_VTABLE_END
};

Service::Service()
    : Platform::Thread("Diagnostics")
    , wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

Service::~Service()
{
    stop();
}

void Service::start()
{
    stopping = false;
    startThread();
}

void Service::stop()
{
    if (!isThreadRunning())
        return;
    stopping = true;
    ::eventfd_write(wake.get(), 1);
    Platform::awaitEnd(*this, endLimitMs);
}

void Service::run()
{
    while (!stopping)
    {
        const Platform::Observer observer;
        if (const int result = handle(); result < 0)
        {
            logger().error("the bus of the diagnostics is away: %s", std::strerror(-result));
            bus.reset();
            endTrace(); // whoever has started it is not there any more; on the next bus others have its name
            nextAttempt = Platform::Clock::now() + retryPause;
        }
        writeTrace();
        if (Platform::Clock::now() >= nextLook)
        {
            watchdog.look();
            nextLook = Platform::Clock::now() + watchdog.period();
        }
        wait();
    }
    trace.stop();
    bus.reset();
}

bool Service::connect()
{
    if (Platform::Clock::now() < nextAttempt)
        return false;
    nextAttempt = Platform::Clock::now() + retryPause;
    Platform::SdBus fresh;
    int result = Platform::prepareBus(fresh, Platform::IPCMsg::MessageHelper::busAddress());
    auto* raw = fresh.get();
    if (result >= 0)
        result = sd_bus_negotiate_fds(raw, 1);
    if (result >= 0)
        result = sd_bus_start(raw);
    if (result >= 0)
        result = sd_bus_add_object_vtable(raw, nullptr, Wire::objectPath, Wire::interfaceName, vtable, this);
    if (result >= 0)
        result = sd_bus_match_signal_async(raw, nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", "NameOwnerChanged", onName, nullptr, this);
    if (result >= 0)
        result = sd_bus_request_name_async(raw, nullptr, Wire::busName, SD_BUS_NAME_QUEUE, onNamed, nullptr);
    if (result >= 0)
        bus = std::move(fresh);
    return result >= 0;
}

int Service::handle()
{
    if (bus == nullptr && !connect())
        return 0;
    return sd_bus_process(bus.get(), nullptr); // one call; the next one is waited for no longer than it takes
}

void Service::wait()
{
    const auto now = Platform::Clock::now();
    auto until = nextLook;
    if (trace.isOn())
        until = std::min(until, now + tracePeriod);
    if (bus == nullptr)
        until = std::min(until, nextAttempt);
    pollfd descriptors[] = { { wake.get(), POLLIN, 0 }, { -1, 0, 0 } };
    if (bus != nullptr)
    {
        const int events = sd_bus_get_events(bus.get());
        descriptors[1] = { sd_bus_get_fd(bus.get()), static_cast<short>(std::max(events, 0)), 0 };
        std::uint64_t busTime = 0;
        if (sd_bus_get_timeout(bus.get(), &busTime) > 0 && busTime != UINT64_MAX)
            until = std::min(until, Platform::Clock::time_point(std::chrono::microseconds(busTime)));
    }
    const auto pause = std::chrono::ceil<std::chrono::milliseconds>(until - now).count();
    ::poll(descriptors, std::size(descriptors), static_cast<int>(std::clamp<std::int64_t>(pause, 0, 1000)));
}

void Service::writeTrace()
{
    const auto summary = trace.poll(Platform::Clock::now());
    if (!summary)
        return;
    traceOwner.clear();
    sd_bus_message* raw = nullptr;
    if (bus == nullptr ||
        sd_bus_message_new_signal(bus.get(), &raw, Wire::objectPath, Wire::interfaceName, "TraceEnded") < 0)
        return;
    const Platform::SdBusMessage signal(raw);
    if (Wire::append(raw, jsonOf(*summary)) >= 0)
        sd_bus_send(bus.get(), raw, nullptr);
}

int Service::answer(sd_bus_message* call)
{
    const std::string method = sd_bus_message_get_member(call);
    Json content;
    const auto* plain = std::ranges::find_if(plainReports, [&](const auto& each) { return method == each.method; });
    if (plain != std::end(plainReports))
        content = plain->report();
    else if (method == "Settings")
        content = Reports::settings(readText(call));
    else if (method == "Why")
    {
        const auto subject = readText(call);
        content = why(subject, readText(call)).toJson();
    }
    else if (method == "SetLog")
        setLog(call);
    else if (method == "StartTrace")
        startTrace(call);
    else if (method == "StopTrace")
        content = jsonOf(endTrace());
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_method_return(call, &raw);
    const Platform::SdBusMessage reply(raw);
    if (result >= 0 && !content.is_null())
        result = Wire::append(raw, content, Wire::recordType);
    return result < 0 ? result : sd_bus_send(nullptr, raw, nullptr);
}

void Service::setLog(sd_bus_message* call) const
{
    const auto level = readText(call);
    const auto file = readText(call);
    using Change = Platform::Logger::LevelChange;
    const auto change = Platform::Logger::getInstance()->setLevel(level, file);
    if (change == Change::unknownLevel)
        throw Unknown("There is no level \"" + level + "\": error, info, debug, verbose or default.");
    if (change == Change::tooManyFiles)
        throw std::runtime_error("Too many files have levels of their own: take some back with default.");
    if (file.empty())
        Platform::CorvaneConfig::overrideSystemDebug(level == "verbose" ? std::optional(true) : std::nullopt);
}

void Service::startTrace(sd_bus_message* call)
{
    int file = -1;
    std::uint32_t seconds = 0;
    constexpr std::uint32_t longest = 600;
    if (sd_bus_message_read(call, "hu", &file, &seconds) < 0)
        throw std::runtime_error("The call lacks a file and a time.");
    if (seconds < 1 || seconds > longest)
        throw Unknown("A trace takes 1 to 600 seconds.");
    if (const auto problem = trace.begin(file, std::chrono::seconds(seconds)); !problem.empty())
        throw std::runtime_error(problem);
    const auto* sender = sd_bus_message_get_sender(call);
    traceOwner = sender == nullptr ? "" : sender;
}

TraceSession::Summary Service::endTrace()
{
    traceOwner.clear();
    return trace.stop();
}

int Service::onOwnerChanged(sd_bus_message* signal)
{
    const char *changed = nullptr, *before = nullptr, *after = nullptr;
    if (sd_bus_message_read(signal, "sss", &changed, &before, &after) < 0)
        return 0;
    if (trace.isOn() && traceOwner == changed && *after == '\0')
        endTrace();
    return 0;
}

int Service::onName(sd_bus_message* signal, void* service, sd_bus_error*)
{
    return static_cast<Service*>(service)->onOwnerChanged(signal);
}

int Service::onNamed(sd_bus_message* reply, void*, sd_bus_error*)
{
    constexpr std::uint32_t isQueued = 2; // DBUS_REQUEST_NAME_REPLY_IN_QUEUE
    std::uint32_t result = 0;
    if (const auto* error = sd_bus_message_get_error(reply); error != nullptr)
        logger().error("the bus refuses the name %s: %s", Wire::busName, error->message);
    else if (sd_bus_message_read(reply, "u", &result) >= 0 && result == isQueued)
        logger().error("another process has the name %s: waiting for it", Wire::busName);
    return 1;
}

int Service::onVersion(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*, sd_bus_error*)
{
    return sd_bus_message_append(reply, "u", Wire::version);
}

int Service::onCall(sd_bus_message* call, void* service, sd_bus_error* error)
{
    try
    {
        return static_cast<Service*>(service)->answer(call);
    }
    catch (const Unknown& unknown)
    {
        return sd_bus_error_set(error, Wire::unknownError, unknown.what());
    }
    catch (const Platform::Observer::Busy&)
    {
        return sd_bus_error_set(error, Wire::failedError,
                                "A thread of the engine keeps what was asked for: see groups.");
    }
    catch (const std::exception& failure)
    {
        return sd_bus_error_set(error, Wire::failedError, failure.what());
    }
}

} // namespace Diagnostics
