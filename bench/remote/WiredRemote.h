#pragma once

#include "bench/mcu/PseudoTerminal.h"
#include "bench/remote/RemoteDisplay.h"
#include "bench/unit/Journal.h"

#include <atomic>
#include <span>
#include <thread>

namespace Bench
{

/**
    The wired remote behind a pseudo-terminal of its own: shows what the unit writes, has keys, and can be pulled out
    and put back.

    Journal streams: "remote display" (both lines, after each command that writes there), "remote dimmer" ("A 15"),
    "remote" (plugged, unplugged, damaged bytes). Any thread.
*/
class WiredRemote
{
public:
    using Milliseconds = std::chrono::milliseconds;

    explicit WiredRemote(Journal& journalToUse);
    ~WiredRemote();
    WiredRemote(const WiredRemote&) = delete;
    WiredRemote& operator=(const WiredRemote&) = delete;

    /** `linkPath` is what the unit opens: it leads to the remote while that is plugged. Empty on success. */
    std::string start(const std::string& linkPath);
    void stop();

    /** False when it is unplugged or the unit does not read. The unit ignores keys that arrive together. */
    bool press(std::uint8_t key) { return sendBytes(std::span(&key, 1)); }
    bool sendBytes(std::span<const std::uint8_t> bytes);
    /** Presses it again and again for so long. */
    void hold(std::uint8_t key, Milliseconds duration);

    void unplug();
    std::string plug();
    bool isPlugged() const;
    /** Takes no bytes from the unit while it lasts. */
    void stall(bool on);

    RemoteDisplay display() const;

    struct Key
    {
        const char* name;
        std::uint8_t byte;
    };
    static std::span<const Key> keys();
    static std::optional<std::uint8_t> findKey(const std::string& name);

    static constexpr Milliseconds repeatEvery { 100 };

private:
    Journal& journal;
    std::string link;
    int wakeUp = -1;
    std::thread thread;
    std::atomic<bool> stopping { false };

    mutable std::mutex lock; // guards everything below
    PseudoTerminal line;
    RemoteDisplay shown;
    bool stalled = false;
    struct Held
    {
        std::uint8_t key;
        Clock::time_point next, end;
    };
    std::optional<Held> held;

    void run();
    void read();
    void take(std::uint8_t byte);
    void repeatHeldKey();
    bool write(std::span<const std::uint8_t> bytes);
    int untilNextRepeat() const;
    void wake() const;
};

} // namespace Bench
