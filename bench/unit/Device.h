#pragma once

#include "bench/unit/Journal.h"

#include <span>

namespace Bench
{

/**
    A device of the simulated unit, as a pure model: calls and bytes in, bytes and events out. It knows no thread, clock
    or socket, so it runs in the live unit and in simulated time. One thread at a time.
*/
class Device
{
public:
    Device() = default;
    virtual ~Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    /**
        Does what is due by this time, which never goes back. It is called before each other call, so that the device
        knows the time, and after it, to do what the call has made due.
    */
    void advance(Clock::time_point time)
    {
        now = time;
        doDue();
    }
    /** When `advance` is to be called next; empty while only a call can make something due. */
    virtual std::optional<Clock::time_point> due() const { return {}; }

protected:
    Clock::time_point now;

    virtual void doDue() {}
};

/** The bench's end of a serial line to the unit. Its owner decides where its bytes go. */
class SerialLine
{
public:
    virtual ~SerialLine() = default;

    std::function<void(std::span<const std::uint8_t>)> received;

    /** From now on the unit can open the line. Empty on success, else what failed. */
    virtual std::string open() = 0;
    /** A unit that has it open sees the line hang up. */
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    /** False when bytes are lost, because it is closed or the unit does not read. */
    virtual bool write(std::span<const std::uint8_t> bytes) = 0;
    /** What the unit writes stays in the line while nobody reads. */
    virtual void setReading(bool on) = 0;
    /** Throws away what neither end has read yet. */
    virtual void flush() = 0;
};

/**
    The bench's end of a socket that programs of the unit connect to and exchange packets over. Each connection has a
    number that is never used again. Its owner decides what happens with packets.
*/
class PacketLine
{
public:
    using Packet = std::span<const std::uint8_t>;

    virtual ~PacketLine() = default;

    std::function<void(int connection, int pid)> connected = [](int, int) {};
    std::function<void(int connection, Packet)> received;
    std::function<void(int connection)> closed = [](int) {};

    /** Empty on success, else what failed. */
    virtual std::string open() = 0;
    /** Ends every connection without calling the owner. */
    virtual void close() = 0;
    /** False when the connection is gone or its peer does not read. */
    virtual bool send(int connection, Packet packet) = 0;
    /** The peer finds its connection closed; `closed` is called soon after. */
    virtual void drop(int connection) = 0;
};

} // namespace Bench
