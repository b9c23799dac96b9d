#pragma once

#include <map>
#include <string>

namespace Bench
{

/** Where the things of a unit are. Paths are absolute. */
struct Places
{
    std::string folder; ///< of the bench's own files
    std::string mcuPort, remotePort;
    std::string spi2, i2c1, gpio;        ///< sockets of the simulated buses
    std::string control;                 ///< socket of the programs
    std::string media;                   ///< folder of the mount points
    std::string resources;               ///< the engine's
    std::string engineLock;              ///< the engine holds it as long as it runs
    std::string log;                     ///< where the engine writes it; "" when nobody says
    std::map<int, std::string> programs; ///< by application type; the engine starts these

    std::string updateLog() const { return folder + "/update.log"; }

    /** Of a unit that has all of it in one folder; the resources are elsewhere. */
    static Places in(const std::string& folder, const std::string& resources);
};

/** A text as TOML writes it. */
std::string quoted(const std::string& text);

} // namespace Bench
