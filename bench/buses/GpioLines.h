#pragma once

#include "bench/buses/PacketServer.h"
#include "bench/buses/Slowness.h"
#include "bench/unit/Journal.h"

namespace Bench
{

/** The general-purpose lines. Journal stream "gpio 32856": "1" for each level driven. Any thread. */
class GpioLines
{
public:
    struct Line
    {
        std::uint32_t function = 0;
        std::uint32_t level = 0;
        unsigned writes = 0;
    };

    explicit GpioLines(Journal& journalToUse);
    ~GpioLines() { stop(); }

    /** Serves the lines at this socket. Empty on success, else what failed. */
    std::string start(const std::string& path);
    /** The bus is no longer slow then. */
    void stop();
    /** Each operation takes so much longer; 0 ends it at once. */
    void slowBy(std::chrono::milliseconds delay) { slowness.set(delay); }

    /** The lines that the unit has touched so far. */
    std::map<std::uint32_t, Line> lines() const;
    /** A level from outside, which the unit reads. */
    void drive(std::uint32_t line, std::uint32_t level);

    static constexpr std::size_t maxLines = 1024;

private:
    Journal& journal;
    Slowness slowness;
    mutable std::mutex lock;
    std::map<std::uint32_t, Line> table;
    PacketServer server; // last: its thread ends before what it uses

    std::vector<std::uint8_t> answer(PacketServer::Packet request);
};

} // namespace Bench
