#include "bench/unit/EngineWatch.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Bench
{

using namespace std::chrono_literals;

namespace
{

constexpr const char* engineName = "com.corvane.AppMain";
constexpr std::chrono::milliseconds retryPause = 100ms;
constexpr std::chrono::microseconds answerLimit = 5s;
constexpr std::chrono::seconds killLimit { 10 };

bool isReadable(int descriptor, std::chrono::milliseconds wait = 0ms)
{
    pollfd each { descriptor, POLLIN, 0 };
    return ::poll(&each, 1, static_cast<int>(wait.count())) > 0;
}

} // namespace

EngineWatch::EngineWatch(Journal& journalToUse, std::function<void()> endedCall)
    : journal(journalToUse)
    , ended(std::move(endedCall))
{
}

void EngineWatch::start(std::string busAddress)
{
    address = std::move(busAddress);
    wakeUp.clear();
    thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

void EngineWatch::stop()
{
    thread.request_stop();
    wakeUp.set();
    if (thread.joinable())
        thread.join();
}

int EngineWatch::pid() const
{
    const std::scoped_lock guard(lock);
    return process;
}

std::string EngineWatch::kill()
{
    Platform::Descriptor killed;
    {
        const std::scoped_lock guard(lock);
        if (process < 0)
            return "no engine is on the bus";
        if (::syscall(SYS_pidfd_send_signal, handle.get(), SIGKILL, nullptr, 0) != 0 && errno != ESRCH)
            return "engine " + std::to_string(process) + ": " + std::strerror(errno);
        killed.reset(::dup(handle.get()));
    }
    return isReadable(killed.get(), killLimit) ? "" : "the engine does not end";
}

void EngineWatch::run(const std::stop_token& stop)
{
    while (!stop.stop_requested())
    {
        if (bus == nullptr)
            connect();
        if (bus != nullptr)
            handleBus();
        checkForEnd();
        waitForNews();
    }
    ownerMatch.reset();
    bus.reset();
}

void EngineWatch::connect()
{
    sd_bus* made = nullptr;
    if (sd_bus_new(&made) < 0)
        return;
    bus.reset(made);
    sd_bus_slot* slot = nullptr;
    const bool isThere = sd_bus_set_address(made, address.c_str()) >= 0 && sd_bus_set_bus_client(made, 1) >= 0 &&
                         sd_bus_start(made) >= 0 && sd_bus_set_method_call_timeout(made, answerLimit.count()) >= 0 &&
                         sd_bus_match_signal(made, &slot, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                             "org.freedesktop.DBus", "NameOwnerChanged", onOwnerChanged, this) >= 0;
    ownerMatch.reset(slot);
    if (!isThere)
        return bus.reset();
    busIsThere = true;
    journal.add("bus", "started");
    lookForEngine();
}

void EngineWatch::handleBus()
{
    int result = 0;
    while ((result = sd_bus_process(bus.get(), nullptr)) > 0)
    {
    }
    if (result >= 0)
        return;
    ownerMatch.reset();
    bus.reset();
    busIsThere = false;
    journal.add("bus", "stopped");
}

int EngineWatch::onOwnerChanged(sd_bus_message* message, void* self, sd_bus_error*)
{
    const char* name = nullptr;
    if (sd_bus_message_read(message, "s", &name) >= 0 && std::strcmp(name, engineName) == 0)
        static_cast<EngineWatch*>(self)->lookForEngine();
    return 0;
}

void EngineWatch::lookForEngine()
{
    sd_bus_creds* raw = nullptr;
    pid_t found = -1;
    const bool isThere = sd_bus_get_name_creds(bus.get(), engineName, SD_BUS_CREDS_PID, &raw) >= 0 &&
                         sd_bus_creds_get_pid(raw, &found) >= 0;
    sd_bus_creds_unref(raw);
    if (!isThere || found == pid())
        return; // it may only have lost the bus
    // The one before ends a moment after it has left its name.
    if (const int former = handleOfEngine(); former >= 0)
        isReadable(former, killLimit);
    checkForEnd();
    const std::scoped_lock guard(lock);
    handle.reset(static_cast<int>(::syscall(SYS_pidfd_open, found, 0)));
    if (!handle)
        return; // it has ended already
    process = found;
    journal.add("engine", "started");
}

int EngineWatch::handleOfEngine() const
{
    const std::scoped_lock guard(lock);
    return handle.get();
}

void EngineWatch::checkForEnd()
{
    {
        const std::scoped_lock guard(lock);
        if (!handle || !isReadable(handle.get()))
            return;
        handle.reset();
        process = -1;
    }
    ended();
    journal.add("engine", "ended");
}

void EngineWatch::waitForNews()
{
    pollfd each[] = { { wakeUp.getDescriptor(), POLLIN, 0 }, { handleOfEngine(), POLLIN, 0 }, { -1, 0, 0 } };
    auto limit = retryPause;
    if (bus != nullptr)
    {
        each[2] = { sd_bus_get_fd(bus.get()), static_cast<short>(sd_bus_get_events(bus.get())), 0 };
        limit = std::chrono::milliseconds(-1); // every call on it has been answered
    }
    ::poll(each, std::size(each), static_cast<int>(limit.count()));
}

} // namespace Bench
