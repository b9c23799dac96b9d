#pragma once

#include "bench/simulation/SimulatedUnit.h"

#include <deque>

namespace Simulation
{

/**
    What outlives a unit whose power is cut: the source that its microcontroller remembers, and the settings, of which
    the next life has to find the last ones that could be stored.
*/
class Memory
{
public:
    /** `fileToUse` is kept from one life to the next. */
    Memory(SimulatedUnit& unitToUse, std::string fileToUse);

    /** On the message thread, before the engine is built. What is wrong with what has been stored; empty for nothing. */
    std::string begin();
    /** Looks at the settings; often, so that it knows what could have been stored. */
    void look();
    /** Writes down what the next life has to find. */
    void end();

private:
    SimulatedUnit& unit;
    const std::string file;
    bool isOpen = false; ///< the store, which the message thread opens
    struct Value
    {
        std::string text;
        Clock::time_point since;
    };
    std::map<int, std::deque<Value>> settings; ///< the newest one last

    static std::string valueOf(int setting);
};

} // namespace Simulation
