#include "ctl/Client.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace Ctl
{

namespace Wire = Diagnostics::Wire;
using namespace std::chrono_literals;

namespace
{

constexpr std::chrono::microseconds answerLimit = 5s;
constexpr std::chrono::microseconds lookAround = 100ms;

/** An error of the bus, which frees itself. */
struct Error : sd_bus_error
{
    Error()
        : sd_bus_error {}
    {
    }
    ~Error() { sd_bus_error_free(this); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
};

bool isAnyOf(const char* name, std::initializer_list<const char*> names)
{
    return std::ranges::any_of(names, [&](const char* each) { return std::string_view(name) == each; });
}

Answer contentOf(sd_bus_message* message)
{
    try
    {
        return { Answer::done, Wire::read(message) };
    }
    catch (const std::runtime_error& error)
    {
        return { Answer::failed, {}, std::string("the engine's answer makes no sense: ") + error.what() };
    }
}

} // namespace

struct Client::Trace
{
    Platform::SdBusMessage begun; ///< the answer of StartTrace
    Platform::SdBusMessage ended; ///< the signal

    bool isOn() const { return begun != nullptr && sd_bus_message_is_method_error(begun.get(), nullptr) == 0; }

    static int begin(sd_bus_message* message, void* self, sd_bus_error*)
    {
        static_cast<Trace*>(self)->begun.reset(sd_bus_message_ref(message));
        return 0;
    }
    static int end(sd_bus_message* message, void* self, sd_bus_error*)
    {
        // What ends before this one has begun is another's.
        if (auto& trace = *static_cast<Trace*>(self); trace.isOn())
            trace.ended.reset(sd_bus_message_ref(message));
        return 0;
    }
};

Client::Client(std::string busAddress)
    : address(std::move(busAddress))
{
}

Answer Client::connect()
{
    if (bus != nullptr && sd_bus_is_open(bus.get()) > 0)
        return {};
    answerer.clear(); // names begin anew on each bus
    sd_bus* session = nullptr;
    int result = 0;
    if (address.empty())
    {
        result = sd_bus_open_user(&session);
        bus.reset(session);
    }
    else if ((result = Platform::prepareBus(bus, address)) >= 0)
        result = sd_bus_start(bus.get());
    if (result >= 0)
        result = sd_bus_set_method_call_timeout(bus.get(), answerLimit.count());
    if (result >= 0)
        return {};
    bus.reset();
    const auto* reason = result == -ENOMEDIUM ? "the environment names none" : std::strerror(-result);
    return absence("there is no connection to ", std::string(": ") + reason);
}

Answer Client::absence(const std::string& before, const std::string& behind) const
{
    // What tells one run of a bus from the next tells a person nothing.
    const auto place = Platform::withoutIdentity(address);
    return { Answer::absent, {}, before + (place.empty() ? "the session bus" : "the bus at " + place) + behind };
}

Answer Client::explain(const sd_bus_error& error, const char* method)
{
    const std::string message = error.message != nullptr ? error.message : error.name;
    if (isAnyOf(error.name, { Wire::unknownError }))
        return { Answer::unknown, {}, message };
    if (isAnyOf(error.name, { Wire::failedError }))
        return { Answer::failed, {}, message };
    if (isAnyOf(error.name,
                { SD_BUS_ERROR_UNKNOWN_METHOD, SD_BUS_ERROR_UNKNOWN_INTERFACE, SD_BUS_ERROR_UNKNOWN_OBJECT }))
        return { Answer::unknown, {}, std::string("the engine is of another version, it has no ") + method };
    if (isAnyOf(error.name, { SD_BUS_ERROR_ACCESS_DENIED }))
        return { Answer::failed, {}, "the bus does not allow to ask the engine: " + message };
    if (sd_bus_is_open(bus.get()) <= 0)
    {
        bus.reset();
        return absence("nobody answers on ");
    }
    if (sd_bus_get_name_creds(bus.get(), Wire::busName, 0, nullptr) < 0)
        return absence("no engine answers on ");
    if (isAnyOf(error.name, { SD_BUS_ERROR_TIMEOUT, SD_BUS_ERROR_NO_REPLY }))
        return { Answer::failed, {}, "the engine does not answer" };
    return { Answer::failed, {}, message };
}

Platform::SdBusMessage Client::newCall(const char* method) const
{
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus.get(), &made, Wire::busName, Wire::objectPath, Wire::interfaceName, method) <
        0)
        return {};
    sd_bus_message_set_auto_start(made, 0); // to ask is not to start
    return Platform::SdBusMessage(made);
}

Answer Client::ask(const char* method, const std::vector<std::string>& parameters)
{
    if (auto connected = connect(); connected.kind != Answer::done)
        return connected;
    const auto request = newCall(method);
    int result = request != nullptr ? 0 : -ENOMEM;
    for (const auto& parameter : parameters)
        if (result >= 0)
            result = sd_bus_message_append_basic(request.get(), 's', parameter.c_str());
    Error error;
    sd_bus_message* received = nullptr;
    if (result >= 0)
        result = sd_bus_call(bus.get(), request.get(), 0, &error, &received);
    const Platform::SdBusMessage reply(received);
    if (result < 0)
    {
        if (sd_bus_error_is_set(&error) == 0)
            sd_bus_error_set_errno(&error, result);
        return explain(error, method);
    }
    if (const auto* sender = sd_bus_message_get_sender(received); sender != nullptr && answerer != sender)
    {
        if (auto different = checkVersion(); different.kind != Answer::done)
            return different;
        answerer = sender;
    }
    return contentOf(received);
}

Answer Client::checkVersion()
{
    Error error;
    std::uint32_t version = 0;
    if (sd_bus_get_property_trivial(bus.get(), Wire::busName, Wire::objectPath, Wire::interfaceName, "Version", &error,
                                    'u', &version) < 0)
        return explain(error, "Version");
    if (version <= Wire::version)
        return {};
    return { Answer::failed,
             {},
             "the engine answers in version " + std::to_string(version) + ", and this headunit-ctl reads " +
                 std::to_string(Wire::version) + ": use the one that came with the engine" };
}

/** An engine that ends is noticed by its name, which the bus then takes away. */
Answer Client::trace(int descriptor, std::uint32_t seconds, const std::function<bool()>& isInterrupted)
{
    if (auto connected = connect(); connected.kind != Answer::done)
        return connected;
    Trace trace;
    const auto request = newCall("StartTrace");
    int result = request != nullptr ? sd_bus_message_append(request.get(), "hu", descriptor, seconds) : -ENOMEM;
    sd_bus_slot* ending = nullptr;
    sd_bus_slot* beginning = nullptr;
    if (result >= 0)
        result = sd_bus_match_signal(bus.get(), &ending, Wire::busName, Wire::objectPath, Wire::interfaceName,
                                     "TraceEnded", Trace::end, &trace);
    if (result >= 0)
        result = sd_bus_call_async(bus.get(), &beginning, request.get(), Trace::begin, &trace, 0);
    const Platform::SdBusSlot endSlot(ending), beginSlot(beginning);
    sd_bus_track* tracked = nullptr;
    if (result >= 0)
        result = sd_bus_track_new(bus.get(), &tracked, nullptr, nullptr);
    const std::unique_ptr<sd_bus_track, decltype(&sd_bus_track_unref)> engines(tracked, sd_bus_track_unref);
    if (result >= 0)
        result = sd_bus_track_add_name(tracked, Wire::busName);
    while (result >= 0)
    {
        while ((result = sd_bus_process(bus.get(), nullptr)) > 0)
            ;
        if (trace.ended != nullptr)
            return contentOf(trace.ended.get());
        if (trace.begun != nullptr && !trace.isOn())
            return explain(*sd_bus_message_get_error(trace.begun.get()), "StartTrace");
        if (sd_bus_track_count(tracked) == 0)
            return absence("the engine has left ");
        if (isInterrupted())
            return stopTrace(trace);
        if (result >= 0)
            result = sd_bus_wait(bus.get(), lookAround.count());
    }
    Error error;
    sd_bus_error_set_errno(&error, result);
    return explain(error, "StartTrace");
}

Answer Client::stopTrace(const Trace& trace)
{
    auto stopped = ask("StopTrace");
    // It may have ended by itself just before.
    while (sd_bus_process(bus.get(), nullptr) > 0)
        ;
    return trace.ended != nullptr ? contentOf(trace.ended.get()) : stopped;
}

} // namespace Ctl
