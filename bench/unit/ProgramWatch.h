#pragma once

#include "bench/unit/Programs.h"
#include "platform/base/WakeUp.h"
#include "platform/channel/RemoteMessage.h"
#include "platform/channel/linux/IpcSdBus.h"

#include <set>
#include <thread>

namespace Bench
{

/**
    Sees the programs that are not the bench's own, from outside: on the unit's message bus, where it hears what goes
    between them and the engine, and by their processes. `Programs` is told of it. Any thread.

    A bus of another user may let nobody listen; then journal stream "bus" says so, and only their coming and going is seen.
*/
class ProgramWatch
{
public:
    ProgramWatch(Programs& programsToTell, Journal& journalToUse);
    ~ProgramWatch() { stop(); }
    ProgramWatch(const ProgramWatch&) = delete;
    ProgramWatch& operator=(const ProgramWatch&) = delete;

    /** By application type. The bus need not be there, and may come and go. */
    void start(std::string busAddress, std::set<int> programsToWatch);
    void stop();

private:
    Programs& programs;
    Journal& journal;
    std::string address;
    std::set<int> watched;
    Platform::WakeUp wakeUp; ///< set when the thread is to end
    std::jthread thread;

    // On the thread.
    Platform::SdBus bus;     ///< answers questions
    Platform::SdBus monitor; ///< hears everything and cannot ask; none where nobody may listen
    Platform::SdBusSlot ownerMatch;
    std::map<int, std::string> connections; ///< of the programs and the engine, as far as they are on the bus
    struct Process
    {
        int pid;
        Platform::Descriptor handle;
    };
    std::map<int, Process> processes;
    bool refusalTold = false;

    void run(const std::stop_token& stop);
    void connect();
    int listen();
    void handleTraffic();
    void forgetBus();
    void ownerChanged(sd_bus_message* message);
    void setOwner(int appType, const std::string& connection);
    void onMonitored(sd_bus_message* message);
    void onAnswer(int appType, const Platform::RemoteMessage& message);
    void onOrder(int appType, const Platform::RemoteMessage& message);
    std::set<int> watchedNames() const;
    void onCommandLine(int appType, const Platform::Bundle::Ptr& bundle);
    int typeOf(const char* connection) const;
    void checkForEnds();
    void waitForNews();
};

} // namespace Bench
