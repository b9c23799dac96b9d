#pragma once

#include "bench/unit/Unit.h"

namespace Bench
{

/** Something that was made worse and is not well yet. */
struct ActiveFault
{
    std::string what; ///< "mcu loses 2 frames", short enough for a prompt
    std::string cure; ///< the console's line that takes it away
};

/** Those of link, buses, programs, remote, test equipment and engine, by what the devices say now. Any thread. */
std::vector<ActiveFault> activeFaults(Unit& unit);

} // namespace Bench
