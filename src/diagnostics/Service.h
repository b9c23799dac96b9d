#pragma once

#include "diagnostics/TraceSession.h"
#include "diagnostics/Watchdog.h"
#include "diagnostics/Wire.h"
#include "platform/base/Descriptor.h"
#include "platform/base/Threads.h"
#include "platform/channel/linux/IpcSdBus.h"

#include <atomic>

namespace Diagnostics
{

/**
    Answers on the bus under the name com.corvane.Diagnostics, on a connection and a thread ("Diagnostics") of its own, so
    that a unit whose other threads are stuck still says why; it also writes the trace and feeds the watchdog. It begins when the
    engine runs and ends before that is stopped. A bus that goes away is tried again every second.
*/
class Service : private Platform::Thread
{
public:
    Service();
    ~Service() override;

    /** Message thread, both. */
    void start();
    void stop();

private:
    void run() override;
    bool connect();
    int handle();
    void wait();
    void writeTrace();

    // Answers to calls. Each throws Unknown, or std::runtime_error with a sentence.
    int answer(sd_bus_message* call);
    void setLog(sd_bus_message* call) const;
    void startTrace(sd_bus_message* call);
    TraceSession::Summary endTrace();
    int onOwnerChanged(sd_bus_message* signal);

    static int onCall(sd_bus_message* call, void* service, sd_bus_error* error);
    static int onVersion(sd_bus* bus, const char* path, const char* interface, const char* property,
                         sd_bus_message* reply, void* service, sd_bus_error* error);
    static int onNamed(sd_bus_message* reply, void* service, sd_bus_error* error);
    static int onName(sd_bus_message* signal, void* service, sd_bus_error* error);
    static const sd_bus_vtable vtable[];

    Platform::Descriptor wake;
    std::atomic<bool> stopping { false };
    std::string traceOwner; ///< who has started the trace
    TraceSession trace;
    Watchdog watchdog;
    Platform::Clock::time_point nextLook, nextAttempt;
    Platform::SdBus bus; ///< last: nothing of the above is called after it has gone
};

} // namespace Diagnostics
