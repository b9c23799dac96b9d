#pragma once

#include "bench/buses/PacketServer.h"
#include "bench/dsp/DspChip.h"
#include "bench/mcu/McuFrame.h"
#include "bench/unit/Journal.h"

namespace Bench
{

/**
    The audio DSP on the SPI bus, with the driver in front of it: configure, select, transfers. Several connections may
    be open, one of them holds the select line. A configuration that fails leaves the driver as it was. Journal streams
    "dsp" and "dsp write" as DspChip tells. Any thread.
*/
class Dsp
{
public:
    enum class Crc { right, wrongOnce, wrongAlways };

    /** A picture of everything at one moment. */
    struct State
    {
        DspMemory memory;
        DspCounters counters;
        std::vector<DspImage> images;
        bool awake = false;
        unsigned refused = 0; ///< requests that the driver refused, by fault or because they broke its rules
        std::string faults;   ///< those that hold now; empty when it is well
    };

    explicit Dsp(Journal& journalToUse);
    ~Dsp();

    /** Serves the bus at this socket. Empty on success, else what failed. */
    std::string start(const std::string& path);
    void stop();

    State state() const;
    DspMemory memory() const;

    /** Nothing can open the bus; connections that exist are cut. Empty on success, as when it can be opened again. */
    std::string refuseOpen(bool refuse);
    void failConfigure(bool fail);
    /** The next transfers fail, in either direction. */
    void failTransfers(int count);
    void answerCrc(Crc answer);
    /** Each transfer takes this much longer. */
    void slowBy(std::chrono::milliseconds delay);
    /** Connections are dropped with their next request, as with a driver that has crashed. */
    void setGone(bool isGone);
    /** Ends all of these. Empty on success. */
    std::string clearFaults();

    static constexpr std::size_t maxTransfer = 123; ///< bytes
    static constexpr std::size_t maxBlock = 32 * 1024;

private:
    Journal& journal;
    mutable std::mutex lock;
    std::condition_variable faultsChanged; // a slow transfer ends early when the fault does
    DspChip chip;

    /** One open bus. */
    struct Session
    {
        Bytes block;  ///< written since select
        Bytes answer; ///< what the next read gets, as its prefix asked
        bool overflow = false;
    };
    std::map<int, Session> sessions;
    int selected = 0; ///< the connection that holds the select line, 0 for none
    unsigned refused = 0;

    bool openRefused = false, configureFails = false, gone = false, stopping = false;
    int transfersToFail = 0;
    Crc crc = Crc::right;
    std::chrono::milliseconds delay { 0 };

    std::mutex serving; // opening and closing of the server, which wait for its thread
    std::string path;
    PacketServer server; // last: its thread ends before what it uses

    std::string listen();
    void received(int connection, PacketServer::Packet request);
    void closed(int connection);
    /** Takes the lock and gives it back while a transfer is slow. */
    Bytes answer(int connection, PacketServer::Packet request);
    bool configure(PacketServer::Packet record) const;
    bool select(int connection, PacketServer::Packet value);
    bool write(Session& session, PacketServer::Packet data);
    std::optional<Bytes> read(Session& session, PacketServer::Packet prefix, std::size_t length);
    void endBlock(Session& session);
    std::string faultText() const;
};

} // namespace Bench
