#pragma once

#include "bench/mcu/McuSeries.h"
#include "bench/text/Names.h"

namespace Bench
{

/**
    The companion microcontroller at the other end of the serial link. It keeps the last source and the device id, asks
    the unit for the source after a start, follows the unit's own source changes, and can be made to misbehave. What is
    connected to it (panel, supply, tuner, the boat's network) listens to what travels, and speaks through it.

    Journal streams: "mcu source" (the one it has), "mcu agreed" (the same, when both sides have it), "mcu
    ready-for-power-off", "mcu device-id" (as set by the unit), "mcu link" (silent, back, faults, frames given up),
    "mcu memory" (what it will ask for), "frame NAME" (each frame received), "sent NAME" (each transmission of a frame).
*/
class Mcu : public Device
{
public:
    using Milliseconds = std::chrono::milliseconds;

    enum Command : int {
        lastMemory = 1,
        sourceSwitch = 2,
        sourceReport = 3,
        deviceStatus = 4,
        key = 5, ///< in both directions
        powerOff = 6,
        dataBlock = 7,
        version = 10,
        pgnParcel = 11,
        mediaInfo = 12,
        networkDeviceId = 14,
        dimmer = 18,
        voltage = 19,
        factoryReset = 21,
        heartBeat = 23,
        autoTest = 25,
        setDeviceId = 26,
        getDeviceId = 27
    };

    struct Frame
    {
        bool fromUnit;
        int command;
        Bytes data;
        bool toEverybody = false; ///< as in McuMessage
    };
    /** Each frame once, in the order in which they travel, after the microcontroller's own part. */
    using Listener = std::function<void(const Frame& frame)>;

    /** Both must outlive it. */
    Mcu(Journal& journalToUse, SerialLine& lineToUse);

    /** Those who listen must outlive the traffic. */
    void addListener(Listener listener) { listeners.push_back(std::move(listener)); }
    /** Told of each source that both sides agree on, before the journal is. */
    void setSourceListener(std::function<void(Source)> listener) { sourceListener = std::move(listener); }
    /** What takes the unit's power: after a power-off and a reset to the factory's values. Called in a turn. */
    void setPowerCut(std::function<void()> cut) { cutPower = std::move(cut); }
    /** Told of each `reset`, when it has happened. */
    void setResetListener(std::function<void()> listener) { resetListener = std::move(listener); }
    /** The unit is about to start again: its numbering begins anew, and what is left of the old run is thrown away. */
    void unitRestarts();

    void send(McuMessage message);
    /** What it sends by itself. */
    McuSeries& series() { return ownSeries; }
    std::optional<Clock::time_point> due() const override;

    void requestSource(Source source);
    void requestDeviceStatus() { send({ deviceStatus, {} }); }
    /** When the unit is ready, its power is cut, unless it is `kept`. */
    void requestPowerOff(bool kept = false);
    /** The source asked for after the unit's next start. */
    void setLastMemory(Source source);

    // Faults. Counts are of frames that the microcontroller sends, each transmission counted; acknowledgements are
    // spared.
    struct FaultyFrames
    {
        int left = 0;
        std::optional<int> command {}; ///< only those with this one
        bool take(int commandOfFrame);
    };
    void dropNext(FaultyFrames frames) { faults.drop = frames; }
    /** Every nth frame is lost; 0 ends it. */
    void dropEvery(int nth) { faults.dropEvery = nth, faults.dropCount = 0; }
    void corruptNext(FaultyFrames frames) { faults.corrupt = frames; }
    void repeatNext(FaultyFrames frames) { faults.repeat = frames; }
    /** Of the unit's: not acknowledged, and not taken. */
    void withholdAcks(FaultyFrames frames) { faults.withheldAcks = frames; }
    /** Everything leaves this much later, acknowledgements too; 0 ends it. */
    void delayBy(Milliseconds delay) { faults.delay = delay; }
    /** Hears and says nothing for this long; 0 ends it. */
    void silence(Milliseconds duration);
    void clearFaults();
    struct Faults
    {
        FaultyFrames drop, corrupt, repeat, withheldAcks;
        int dropEvery = 0, dropCount = 0;
        Milliseconds delay { 0 };
        std::optional<Clock::time_point> silentUntil;
    };
    /** Those that hold now. */
    const Faults& activeFaults() const { return faults; }
    /**
        Starts anew by itself, as after a dip of its supply: its numbering begins anew, what was on its way is lost, and
        it goes on with the source that it remembers.
    */
    void reset();

    struct State
    {
        std::optional<Source> source; ///< since it has one
        std::optional<Source> wanted; ///< asked for, not yet reached
        Source lastMemory;
        bool agreed = false;
        bool silent = false;
        bool readyForPowerOff = false;
        Bytes deviceId; ///< 3 bytes, packed BCD; zeros until the unit sets it
        std::optional<Bytes> deviceStatus;
        std::size_t waiting = 0; ///< frames for the unit that it has not acknowledged
        unsigned heartbeats = 0;
        std::optional<Milliseconds> sinceHeartbeat;
        unsigned received = 0, sent = 0, resent = 0, givenUp = 0, duplicates = 0, damaged = 0;
        std::deque<std::string> recent; ///< the last frames in both directions, oldest first
    };
    State state() const;
    bool isUnitReadyForPowerOff() const { return current.readyForPowerOff; }

    static constexpr Milliseconds resendAfter { 200 };
    static constexpr int transmissions = 3;
    static constexpr std::size_t deviceIdSize = 3;

private:
    struct InFlight
    {
        McuFrame frame;
        int transmissionsLeft;
        Clock::time_point due;
    };

    Journal& journal;
    SerialLine& line;
    std::vector<Listener> listeners;
    std::function<void(Source)> sourceListener = [](Source) {};
    std::function<void()> cutPower = [] {};
    bool cutsWhenReady = false;
    std::function<void()> resetListener = [] {};
    McuSeries ownSeries { journal };
    State current;
    std::optional<Clock::time_point> lastHeartbeat;
    Faults faults;
    McuFrameReader reader;
    std::deque<McuMessage> queue;
    std::optional<InFlight> inFlight;
    std::optional<McuFrame> lastReceived;
    std::deque<std::pair<Clock::time_point, Bytes>> delayed;
    std::uint8_t sequence = 0;

    /** What is on its way is lost. */
    void forgetTraffic();
    void take(std::span<const std::uint8_t> bytes);
    void doDue() override;
    void runDeadlines();
    void onFrame(const McuFrame& frame);
    void onAck(const McuFrame& frame);
    void act(const McuFrame& frame);
    void tell(const Frame& frame) const;
    void askForSource(Source source);
    void take(Source source);
    void agreed(Source source);
    void storeDeviceId(const Bytes& id);
    void sendNext();
    void transmitInFlight();
    void put(const Bytes& bytes);
    void writeNow(const Bytes& bytes);
    void note(const char* direction, const McuFrame& frame, const std::string& name, const char* remark = "");
};

} // namespace Bench
