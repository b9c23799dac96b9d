#pragma once

#include "bench/buses/BusDevice.h"
#include "bench/dsp/DspChip.h"

#include <map>

namespace Bench
{

/**
    The audio DSP on the SPI bus, with the driver in front of it: configure, select, transfers. Several connections may
    be open, one of them holds the select line. A configuration that fails leaves the driver as it was. Journal streams
    "dsp" and "dsp write" as DspChip tells.
*/
class Dsp : public BusDevice
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
        unsigned refused = 0;            ///< requests that the driver refused, by fault or because they broke its rules
        std::vector<std::string> faults; ///< those that hold now
    };

    Dsp(Journal& journalToUse, PacketLine& lineToUse);

    /** Nothing comes before. Empty on success, else what failed. */
    std::string start();

    State state() const;
    /** It changes with the next request. */
    const DspMemory& memory() const { return chip.memory(); }

    /** Nothing can open the bus; connections that exist are cut. Empty on success, as when it can be opened again. */
    std::string refuseOpen(bool refuse);
    void failConfigure(bool fail) { configureFails = fail; }
    /** The next transfers fail, in either direction. */
    void failTransfers(int count) { transfersToFail = std::max(count, 0); }
    void answerCrc(Crc answerToGive) { crc = answerToGive; }
    /** Connections are dropped with their next request, as with a driver that has crashed. */
    void setGone(bool isGone) { gone = isGone; }
    /** Ends all of these. Empty on success. */
    std::string clearFaults();

    static constexpr std::size_t maxTransfer = 123; ///< bytes
    static constexpr std::size_t maxBlock = 32 * 1024;

private:
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

    bool openRefused = false, configureFails = false, gone = false, started = false;
    int transfersToFail = 0;
    Crc crc = Crc::right;

    void closed(int connection) override;
    bool canBeSlow(Packet request) const override;
    std::optional<Bytes> answer(int connection, Packet request) override;
    bool configure(Packet record) const;
    bool select(int connection, Packet value);
    bool write(Session& session, Packet data);
    std::optional<Bytes> read(Session& session, Packet prefix, std::size_t length);
    void endBlock(Session& session);
    std::vector<std::string> activeFaults() const;
};

} // namespace Bench
