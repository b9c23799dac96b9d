#pragma once

#include "bench/Journal.h"
#include "bench/McuFrame.h"
#include "bench/Names.h"
#include "bench/PseudoTerminal.h"
#include "bench/Tuner.h"

#include <atomic>
#include <deque>
#include <thread>

namespace Bench
{

/**
    The companion microcontroller at the other end of the serial link, behind a pseudo-terminal. It keeps the last
   source and the device id, asks the unit for the source after a start, follows the unit's own source changes, answers
   a power off or on that the unit asks for with the panel's power key, and can be made to misbehave.

    Journal streams: "mcu source" (a source that both sides agree on), "mcu agreed" (the same, as an agreement),
    "mcu ready-for-power-off", "mcu power" (off and on, each time the panel's power key goes out), "mcu device-id" (as
   set by the unit), "mcu hold" and "mcu flood" ("N sent, M skipped", when they end), "mcu link" (silent, back, faults,
   frames given up), "frame NAME" (each frame received), "sent NAME" (each transmission of a frame). Every public
   operation may be called from any thread; none waits for the unit.
*/
class Mcu
{
public:
    using Milliseconds = std::chrono::milliseconds;

    /** Data of a frame of the factory test. Called on this device's thread; may call every public operation. */
    using AutoTestListener = std::function<void(const Bytes& data)>;

    explicit Mcu(Journal& journalToUse);
    ~Mcu();
    Mcu(const Mcu&) = delete;
    Mcu& operator=(const Mcu&) = delete;

    /** Before `start`. Who listens must outlive the thread, which ends with `stop`. */
    void setAutoTestListener(AutoTestListener listener) { autoTestListener = std::move(listener); }
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
    /** Presses keys in turn, so many a second (1 to `mostKeysPerSecond`). At most one of them waits for the link: when
     * another one's turn comes, that turn is skipped and counted. A flood before ends now. At least one key. */
    void flood(Bytes keys, int perSecond, Milliseconds duration);
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
    void dropNext(int frames);
    void dropEvery(int nth); ///< every nth frame is lost; 0 ends it
    void corruptNext(int frames);
    void repeatNext(int frames);
    void withholdAcks(int frames);       ///< the next frames of the unit are not acknowledged, and not taken
    void delayBy(Milliseconds delay);    ///< everything leaves this much later, acknowledgements too; 0 ends it
    void silence(Milliseconds duration); ///< hears and says nothing for this long; 0 ends it
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
    static constexpr int mostKeysPerSecond = 1000;
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
        int drop = 0, dropEvery = 0, dropCount = 0, corrupt = 0, repeat = 0, withheldAcks = 0;
        Milliseconds delay { 0 };
        std::optional<Clock::time_point> silentUntil;
    };
    /** Keys that come by themselves, one a turn. At most one of them waits for the link. */
    struct KeySeries
    {
        const char* stream;
        Bytes keys;
        int origin;
        bool isReleased; ///< at its end
        std::int64_t allTurns;
        Clock::duration interval;
        Clock::time_point begin, end;
        std::int64_t turns = 0; ///< that have come
        std::int64_t sent = 0;
        bool waits = false;
        /** When it wants the thread; empty while nothing but the link is to come. */
        std::optional<Clock::time_point> due() const;
    };

    Journal& journal;
    AutoTestListener autoTestListener;
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
    std::optional<KeySeries> held, flooding;
    std::vector<Bytes> heardAutoTest; ///< until the listener gets them, without the lock
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
    void startSeries(std::optional<KeySeries>& series, KeySeries with);
    void advanceSeries(std::optional<KeySeries>& series);
    void endSeries(std::optional<KeySeries>& series);
    void queueWaitingKey();
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
