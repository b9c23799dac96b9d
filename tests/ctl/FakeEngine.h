#pragma once

#include "diagnostics/Wire.h"
#include "support/TestBus.h"

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

/**
    Answers on the bus as an engine's diagnostics do, with what a test has put into it. It leaves the bus when it goes.
*/
class FakeEngine
{
public:
    using Json = Diagnostics::Json;

    /** Its answers by method. */
    explicit FakeEngine(const std::string& busAddress, const Json& canned = Json::object(),
                        std::uint32_t versionToTell = Diagnostics::Wire::version)
        : version(versionToTell)
    {
        for (const auto& [method, value] : canned.items())
            answer(method, value);
        sd_bus* raw = nullptr;
        BusPeer::check(sd_bus_new(&raw));
        bus.reset(raw);
        BusPeer::check(sd_bus_set_address(raw, busAddress.c_str()));
        BusPeer::check(sd_bus_set_bus_client(raw, 1));
        BusPeer::check(sd_bus_start(raw));
        BusPeer::check(sd_bus_add_object(raw, nullptr, Diagnostics::Wire::objectPath, take, this));
        BusPeer::check(sd_bus_request_name(raw, Diagnostics::Wire::busName, 0));
        thread = std::thread([this] { run(); });
    }

    ~FakeEngine()
    {
        ending = true;
        thread.join();
    }

    /** What it answers to this method: the value for a parameter of the call, "" for any. */
    void answer(const std::string& method, const Json& value, const std::string& parameter = {})
    {
        const std::lock_guard guard(lock);
        answers[{ method, parameter }] = value;
    }
    void refuse(const std::string& method, const char* name, const std::string& sentence)
    {
        const std::lock_guard guard(lock);
        refusals[method] = { name, sentence };
    }
    /** Takes calls of this method and never answers. */
    void keepSilent(const std::string& method) { refuse(method, "", ""); }

    /** The parameters of the last call of this method, each text in a list; null for none. */
    Json called(const std::string& method)
    {
        const std::lock_guard guard(lock);
        return calls.contains(method) ? calls[method] : Json();
    }
    bool isTracing() { return !called("StartTrace").is_null(); }
    /** Emits the signal. */
    void endTrace(const Json& result)
    {
        const std::lock_guard guard(lock);
        traceEnd = result;
    }

private:
    Platform::SdBus bus;
    const std::uint32_t version;
    std::atomic<bool> ending { false };
    std::mutex lock;
    std::map<std::pair<std::string, std::string>, Json> answers;
    std::map<std::string, std::pair<std::string, std::string>> refusals;
    std::map<std::string, Json> calls;
    Json traceEnd;
    std::thread thread;

    void run()
    {
        constexpr std::uint64_t pauseUs = 5000;
        while (!ending)
        {
            while (sd_bus_process(bus.get(), nullptr) > 0)
                ;
            signalTraceEnd();
            sd_bus_wait(bus.get(), pauseUs);
        }
        bus.reset();
    }

    void signalTraceEnd()
    {
        const std::lock_guard guard(lock);
        if (traceEnd.is_null())
            return;
        sd_bus_message* raw = nullptr;
        sd_bus_message_new_signal(bus.get(), &raw, Diagnostics::Wire::objectPath, Diagnostics::Wire::interfaceName,
                                  "TraceEnded");
        const Platform::SdBusMessage message(raw);
        Diagnostics::Wire::append(raw, traceEnd);
        sd_bus_send(bus.get(), raw, nullptr);
        traceEnd = nullptr;
    }

    static int take(sd_bus_message* message, void* self, sd_bus_error* error)
    {
        return static_cast<FakeEngine*>(self)->reply(message, error);
    }

    int reply(sd_bus_message* message, sd_bus_error* error)
    {
        const std::string method = sd_bus_message_get_member(message);
        if (method == "Get")
            return sd_bus_reply_method_return(message, "v", "u", version);
        const std::lock_guard guard(lock);
        if (method == "StartTrace")
            writeTrace(message);
        else
            calls[method] = asList(Diagnostics::Wire::read(message));
        if (const auto refused = refusals.find(method); refused != refusals.end())
        {
            const auto& [name, sentence] = refused->second;
            return name.empty() ? 1 : sd_bus_error_set(error, name.c_str(), sentence.c_str());
        }
        for (const auto& parameter : calls[method])
            if (const auto found = parameter.is_string() ? answers.find({ method, parameter }) : answers.end();
                found != answers.end())
                return send(message, found->second);
        const auto found = answers.find({ method, "" });
        return found != answers.end() ? send(message, found->second) : 0;
    }

    static Json asList(const Json& value)
    {
        return value.is_array() ? value : value.is_null() ? Json::array() : Json::array({ value });
    }

    static int send(sd_bus_message* message, const Json& value)
    {
        sd_bus_message* raw = nullptr;
        sd_bus_message_new_method_return(message, &raw);
        const Platform::SdBusMessage answered(raw);
        if (!value.is_null())
            BusPeer::check(Diagnostics::Wire::append(raw, value, "a{sv}"));
        return sd_bus_send(nullptr, raw, nullptr) < 0 ? -EIO : 1;
    }

    void writeTrace(sd_bus_message* message)
    {
        int file = -1;
        std::uint32_t seconds = 0;
        BusPeer::check(sd_bus_message_read(message, "hu", &file, &seconds));
        if (!refusals.contains("StartTrace") && ::write(file, "[]", 2) != 2)
            BusPeer::check(-EIO);
        calls["StartTrace"] = Json::array({ seconds });
    }
};
