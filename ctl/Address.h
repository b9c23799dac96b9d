#pragma once

#include <string>

namespace Ctl
{

/** Where the bus of the engine is. */
struct Address
{
    std::string bus;      ///< D-Bus address; empty = the session's
    std::string error {}; ///< a sentence, when it cannot be told
};

/**
    The address that is given; else that of the environment (HEADUNIT_BUS); else `ipc.address` of the engine's
    configuration file, which is the usual one when none is given, and need not be there then; else the session's.
*/
Address findAddress(const std::string& given, const std::string& configurationFile);

} // namespace Ctl
