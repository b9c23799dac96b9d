#pragma once

#include "bench/mcu/McuFrame.h"
#include "bench/mcu/PseudoTerminal.h"
#include "bench/mcu/Tuner.h"
#include "bench/text/Names.h"
#include "bench/unit/Journal.h"

#include <array>
#include <atomic>
#include <deque>
#include <thread>

namespace Bench
{

/**
    The companion microcontroller at the other end of the serial link, behind a pseudo-terminal. It keeps the last
    source and the device id, asks the unit for the source after a start, follows the unit's own source changes, answers
    a power off or on that the unit asks for with the panel's power key, and can be made to misbehave.

    Journal streams: "mcu source" (a source that both sides agree on), "mcu agreed" (the same, as an agreement), "mcu
    ready-for-power-off", "mcu power" (off and on, each time the panel's power key goes out), "mcu device-id" (as set by
    the unit), "mcu hold", "mcu flood" and "mfd flood" ("N sent, M skipped", when they end), "n2k" (what became of a
    play), "mcu link" (silent, back, faults, frames given up), "frame NAME" (each frame received), "sent NAME" (each
    transmission of a frame). Every public operation may be called from any thread; none waits for the unit.
*/
class Mcu
{
public:
    using Milliseconds = std::chrono::milliseconds;

    /** Data of a frame of the factory test. Called on this device's thread; may call every public operation. */
    using AutoTestListener = std::function<void(const Bytes& data)>;

    /** What the unit sends to the boat's network, or gets from it. */
    struct NetworkFrame
    {
        bool fromUnit;
        int command; ///< one of NetworkCommand
        Bytes data;
    };
    enum NetworkCommand : int { dataBlock = 7, version = 10, pgnParcel = 11, mediaInfo = 12, networkDeviceId = 14 };
    /** Each frame once, in the order in which they travel. Called as the other listener is. */
    using NetworkListener = std::function<void(const NetworkFrame& frame)>;

    explicit Mcu(Journal& journalToUse);
    ~Mcu();
    Mcu(const Mcu&) = delete;
    Mcu& operator=(const Mcu&) = delete;

    /** Before `start`. Who listens must outlive the thread, which ends with `stop`. */
    void setAutoTestListener(AutoTestListener listener) { autoTestListener = std::move(listener); }
    void addNetworkListener(NetworkListener listener) { networkListeners.push_back(std::move(listener)); }
    /** Opens the link and starts its thread. Empty on success, else what failed. */
    std::string start();
    void stop();
    /** The character device that the unit opens. */
    std::string portPath() const { return line.path(); }
    /** The unit is about to start again: its numbering begins anew, and what is left of the old run is thrown away. */
    void unitRestarts();

    void send(int command, Bytes data);
    void pressKey(int value, int origin);
    /** Presses a key every 100 ms for this long, at least once, then releases it. A key held before is released now. */
    void hold(int value, int origin, Milliseconds duration);
    /**
        Presses keys in turn, so many a second (1 to `mostPerSecond`). At most one of them waits for the link: when
        another one's turn comes, that turn is skipped and counted. A flood before ends now. At least one key.
    */
    void flood(const Bytes& keys, int perSecond, Milliseconds duration);
    /** As a flood of keys, with one message of the boat's network. */
    void floodNetwork(Bytes parcel, int perSecond, Milliseconds duration);
    struct TimedParcel
    {
        Milliseconds due; ///< from the begin
        Bytes parcel;
    };
    /**
        Messages of the boat's network, in this order, none before it is due. At most one of them waits for the link,
        and none is skipped. A play before ends now. `name` is for the journal: "played N messages of NAME".
    */
    void play(std::string name, std::vector<TimedParcel> parcels);
    void stopPlaying();
    void requestSource(Source source);
    void requestDeviceStatus();
    void requestPowerOff();
    /** The source asked for after the unit's next start. */
    void setLastMemory(Source source);

    /** Lets the tuner do something and reports it; the journal's "mcu tuner" tells where it is tuned to. */
    void useTuner(const std::function<Tuner::Reports(Tuner&)>& what);
    Tuner tuner() const;
    /** Supply in volts, 0 to 25.2; reported to the unit like the next two. */
    void setSupply(double volts);
    void setLights(bool on);
    void setTrigger(bool on);
    /** Level 0 to 11 of the panel's dimmer, moved at the panel. */
    void setDimmer(int level);

    // Faults. Counts are of frames that the microcontroller sends, each transmission counted; acknowledgements are
    // spared.
    struct FaultyFrames
    {
        int left = 0;
        std::optional<int> command {}; ///< only those with this one
        bool take(int commandOfFrame);
    };
    void dropNext(FaultyFrames frames);
    void dropEvery(int nth); ///< every nth frame is lost; 0 ends it
    void corruptNext(FaultyFrames frames);
    void repeatNext(FaultyFrames frames);
    void withholdAcks(FaultyFrames frames); ///< of the unit's: not acknowledged, and not taken
    void delayBy(Milliseconds delay);       ///< everything leaves this much later, acknowledgements too; 0 ends it
    void silence(Milliseconds duration);    ///< hears and says nothing for this long; 0 ends it
    void clearFaults();

    struct State
    {
        std::optional<Source> source; ///< agreed by both sides
        std::optional<Source> wanted; ///< asked for, not yet reached
        Source lastMemory;
        bool agreed = false;
        bool silent = false;
        bool muted = false;
        bool readyForPowerOff = false;
        bool powered = true;  ///< as the panel's power key said last
        double supply = 12.6; ///< volts
        bool lights = false;  ///< of the boat's panels
        bool trigger = false; ///< of the camera
        int dimmer = 11;      ///< 0 to 11
        Bytes deviceId;       ///< 3 bytes, packed BCD; zeros until the unit sets it
        std::optional<Bytes> deviceStatus;
        unsigned heartbeats = 0;
        std::optional<Milliseconds> sinceHeartbeat;
        unsigned received = 0, sent = 0, resent = 0, givenUp = 0, duplicates = 0, damaged = 0;
        std::deque<std::string> recent; ///< the last frames in both directions, oldest first
    };
    State state() const;

    static constexpr Milliseconds resendAfter { 200 };
    static constexpr int transmissions = 3;
    static constexpr Milliseconds holdInterval { 100 };
    static constexpr int mostPerSecond = 1000;
    static constexpr std::size_t deviceIdSize = 3;

private:
    static constexpr int keyCommand = 5; ///< a key, in both directions

    struct Outgoing
    {
        int command;
        Bytes data;
    };
    struct InFlight
    {
        McuFrame frame;
        int transmissionsLeft;
        Clock::time_point due;
    };
    struct Faults
    {
        FaultyFrames drop, corrupt, repeat, withheldAcks;
        int dropEvery = 0, dropCount = 0;
        Milliseconds delay { 0 };
        std::optional<Clock::time_point> silentUntil;
    };
    /** Frames that come by themselves, one a turn. At most one of them waits for the link. */
    struct Series
    {
        const char* stream;
        std::vector<Outgoing> frames; ///< in turn; none is no series
        std::optional<Outgoing> last; ///< at its end
        std::int64_t allTurns;
        Clock::duration interval;
        Clock::time_point begin, end;
        std::int64_t turns = 0; ///< that have come
        std::int64_t sent = 0;
        bool waits = false;
        /** When it wants the thread; empty while nothing but the link is to come. */
        std::optional<Clock::time_point> due() const;
    };
    enum SeriesKind : std::size_t { holding, flooding, floodingNetwork, seriesKinds };
    struct Playing
    {
        std::string name;
        std::vector<TimedParcel> parcels;
        Clock::time_point begin;
        std::size_t sent = 0;
    };

    Journal& journal;
    AutoTestListener autoTestListener;
    std::vector<NetworkListener> networkListeners;
    PseudoTerminal line;
    int wakeUp = -1;
    std::thread thread;
    std::atomic<bool> stopping { false };

    mutable std::mutex lock; // guards everything below
    State current;
    Tuner radio;
    std::optional<Clock::time_point> lastHeartbeat;
    Faults faults;
    McuFrameReader reader;
    std::deque<Outgoing> queue;
    std::array<std::optional<Series>, seriesKinds> series;
    std::optional<Playing> playing;
    std::vector<Bytes> heardAutoTest; ///< until the listener gets them, without the lock
    std::vector<NetworkFrame> heardNetwork;
    std::optional<InFlight> inFlight;
    std::optional<McuFrame> lastReceived;
    std::deque<std::pair<Clock::time_point, Bytes>> delayed;
    std::uint8_t sequence = 0;

    void run();
    Milliseconds untilNextDeadline() const;
    void readPort();
    void runDeadlines();
    void onFrame(const McuFrame& frame);
    void onAck(const McuFrame& frame);
    void act(const McuFrame& frame);
    void answerPowerRequest(const Bytes& data);
    void agreeOn(Source source);
    void reportSupply();
    void send(const Tuner::Reports& reports);
    void storeDeviceId(const Bytes& id);
    void startFlood(SeriesKind kind, const char* stream, std::vector<Outgoing> frames, int perSecond,
                    Milliseconds duration);
    void startSeries(SeriesKind kind, Series with);
    void advanceSeries();
    void endSeries(std::optional<Series>& each);
    void endPlaying();
    /** When the frames that come by themselves want the thread. */
    Clock::time_point nextTurn() const;
    void queueWaiting();
    void noteNetwork(bool fromUnit, int command, const Bytes& data);
    void followPowerKey(const Bytes& data);
    void sendLater(int command, Bytes data);
    void sendNext();
    void transmitInFlight();
    void put(const Bytes& bytes);
    void writeNow(const Bytes& bytes);
    void note(const char* direction, const McuFrame& frame, const std::string& name, const char* remark = "");
    void wake();
    /** A change of the faults, made under the lock and seen at once by the thread. */
    void change(const std::function<void()>& what);
};

} // namespace Bench
