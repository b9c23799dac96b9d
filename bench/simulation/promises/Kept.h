#pragma once

#include <map>
#include <string>

namespace Simulation
{

/**
    What two sides agreed about, by name. Only that can break, and only while nothing fails between them: what a failure
    has cost is made good by the next change. One for each pair of sides, in the unit's only process.
*/
class Kept
{
public:
    /** At the beginning of a check. `failuresSoFar` only grows. */
    void begin(unsigned failuresSoFar)
    {
        failures = failuresSoFar;
        broken.clear();
    }
    void check(const std::string& name, bool agrees, const std::string& has, const std::string& demanded)
    {
        if (agrees)
            failuresBefore[name] = failures;
        else if (const auto found = failuresBefore.find(name);
                 found != failuresBefore.end() && found->second == failures && broken.empty())
            broken = name + " is " + has + " instead of " + demanded;
    }
    /** The first that is no longer so. */
    const std::string& wrong() const { return broken; }

private:
    unsigned failures = 0;
    std::string broken;
    std::map<std::string, unsigned> failuresBefore; ///< when each agreed last
};

} // namespace Simulation
