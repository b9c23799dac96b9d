#pragma once

#include "bench/remote/RemoteDisplay.h"
#include "bench/unit/Device.h"

namespace Bench
{

/**
    The wired remote at a serial line of its own: shows what the unit writes, has keys, and can be pulled out and put
    back.

    Journal streams: "remote display" (both lines, after each command that writes there), "remote dimmer" ("A 15"),
    "remote" (plugged, unplugged, damaged bytes, "sends A1 07").
*/
class WiredRemote : public Device
{
public:
    using Milliseconds = std::chrono::milliseconds;

    /** Both must outlive it. */
    WiredRemote(Journal& journalToUse, SerialLine& lineToUse);

    /** False when it is unplugged or the unit does not read. The unit ignores keys that arrive together. */
    bool press(std::uint8_t key) { return line.write(std::span(&key, 1)); }
    bool sendBytes(std::span<const std::uint8_t> bytes);
    /** Presses it again and again for so long. */
    void hold(std::uint8_t key, Milliseconds duration) { held = { key, now, now + duration }; }

    void unplug();
    /** Empty on success, else what failed. */
    std::string plug();
    bool isPlugged() const { return line.isOpen(); }
    /** Takes no bytes from the unit while it lasts. */
    void stall(bool on) { stalled = on, line.setReading(!on); }
    bool isStalled() const { return stalled; }

    RemoteDisplay display() const { return shown; }

    std::optional<Clock::time_point> due() const override { return held ? std::optional(held->next) : std::nullopt; }

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
    SerialLine& line;
    RemoteDisplay shown;
    struct Held
    {
        std::uint8_t key;
        Clock::time_point next, end;
    };
    std::optional<Held> held;
    bool stalled = false;

    void take(std::uint8_t byte);
    void doDue() override;
};

} // namespace Bench
