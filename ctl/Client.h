#pragma once

#include "diagnostics/Wire.h"
#include "platform/channel/linux/IpcSdBus.h"

#include <functional>

namespace Ctl
{

using Diagnostics::Json;

/** What came of a question. */
struct Answer
{
    enum Kind {
        done,
        absent,  ///< there is no bus, or no engine on it
        unknown, ///< the engine knows no such page, setting, method ...
        failed
    } kind = done;
    Json value {};
    std::string error {}; ///< a sentence for a person, unless it is done
};

/**
    A connection to the bus of an engine. It is opened when it is needed, and again when the bus was away. One thread.
*/
class Client
{
public:
    /** D-Bus address of the bus; empty = the session's. */
    explicit Client(std::string busAddress);

    /** Asks and waits, 5 s at most. The parameters are texts. */
    Answer ask(const char* method, const std::vector<std::string>& parameters = {});
    /**
        Lets the engine write a trace into the file for so many seconds (1 to 600), and waits for its end. As soon as
        `isInterrupted`, which is looked at ten times a second, the trace is stopped; what is written is good, too.
    */
    Answer trace(int descriptor, std::uint32_t seconds, const std::function<bool()>& isInterrupted);

    /** The bus name of the process that has answered last, "" for none: another engine has another one. */
    const std::string& engine() const { return answerer; }

private:
    struct Trace;

    std::string address;
    Platform::SdBus bus;
    std::string answerer;

    /** Done when the bus is there. */
    Answer connect();
    /** A sentence with the bus in the middle. */
    Answer absence(const std::string& before, const std::string& behind = {}) const;
    /** What a call that did not succeed means. */
    Answer explain(const sd_bus_error& error, const char* method);
    /** Done when the engine that answers has the interface of this client. */
    Answer checkVersion();
    Platform::SdBusMessage newCall(const char* method) const;
    Answer stopTrace(const Trace& trace);
};

} // namespace Ctl
