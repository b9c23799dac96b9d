#pragma once

#include "bench/mcu/Mcu.h"
#include "bench/network/NetworkMessage.h"
#include "bench/unit/LineServer.h"

#include <fstream>

namespace Bench
{

/**
    The messages between the unit and the boat's network as lines, to a file and to readers on a TCP port of this
    machine. Lines that readers send, or that a file holds, go to the unit as from the network, except those that the
    unit itself sent or that are for another: these are skipped and counted.

    Journal stream "n2k": where the log goes, readers that are dropped, lines that are refused, a file that takes no more, and what the
    microcontroller says of a play.
*/
class NetworkLog
{
public:
    /** Both must outlive it. */
    NetworkLog(Journal& journalToUse, Mcu& mcuToUse, Loop& loop);
    NetworkLog(const NetworkLog&) = delete;
    NetworkLog& operator=(const NetworkLog&) = delete;

    /** Behind what is in the file. Empty on success; else what failed, and the log goes on where it went before. */
    std::string logTo(const std::string& file);
    void stopLogging();

    /** Port 0 takes any that is free, which `state` tells. Empty on success, else what failed. */
    std::string serve(int port);
    void stopServing();

    /**
        Plays a file's lines with its own time distances divided by `speed`, or without one as fast as the link takes
        them. Nothing is sent of a file that has a bad line. Empty on success, else what is wrong, with the line.
    */
    std::string play(const std::string& file, std::optional<double> speed);
    void stopPlaying() { mcu.series().stopPlaying(); }

    struct State
    {
        std::string file; ///< "" without one
        int port = 0;     ///< 0 without one
        unsigned readers = 0;
        unsigned logged = 0;  ///< messages, to wherever they went
        unsigned fed = 0;     ///< lines of readers that went to the unit
        unsigned skipped = 0; ///< lines of readers and files
        unsigned refused = 0; ///< lines of readers
        unsigned dropped = 0; ///< readers
    };
    State state() const;

private:
    Journal& journal;
    Mcu& mcu;
    LineServer server;
    std::ofstream output;
    State current;

    void hear(const Mcu::Frame& frame);
    void feed(const std::string& line);
};

} // namespace Bench
