#include "EngineApi/SystemState.h"

#include "EngineLayer/system/SystemStateManager.h"

#include <array>

namespace EngineApi
{

namespace
{

constexpr std::array stateNames { "kBooting", "kAntitheft",     "kLocked",  "kNormalRun",
                                  "kISRMode", "kDummyPowerOff", "kPowerOff" };
constexpr std::array subStateNames { "kIdle", "kSchedule", "kSwitch", "kRecovery" };

EngineLayer::SystemStateManager& manager()
{
    return *EngineLayer::SystemStateManager::getInstance();
}

} // namespace

const char* systemStateName(int state)
{
    return Pubhead::nameIn(stateNames, state);
}

const char* systemSubStateName(int subState)
{
    return Pubhead::nameIn(subStateNames, subState);
}

int getSystemState()
{
    return manager().getState();
}

int getPreviousSystemState()
{
    return manager().getPreviousState();
}

int getSystemSubState()
{
    return manager().getSubState();
}

bool isSystemBusy()
{
    return getSystemSubState() != kIdle;
}

int getISRReturnPage()
{
    return manager().getISRReturnPage();
}

void switchSystemState(int state, int subState)
{
    manager().requestSwitch(state, subState);
}

} // namespace EngineApi
