#include "EngineApi/SystemState.h"

#include "platform/base/Pubhead.h"

#include <array>

namespace EngineApi
{

namespace
{

constexpr std::array stateNames { "kBooting", "kAntitheft",     "kLocked",  "kNormalRun",
                                  "kISRMode", "kDummyPowerOff", "kPowerOff" };
constexpr std::array subStateNames { "kIdle", "kSchedule", "kSwitch", "kRecovery" };

} // namespace

const char* systemStateName(int state)
{
    return Pubhead::nameIn(stateNames, state);
}

const char* systemSubStateName(int subState)
{
    return Pubhead::nameIn(subStateNames, subState);
}

} // namespace EngineApi
