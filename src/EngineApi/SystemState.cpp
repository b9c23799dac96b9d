#include "EngineApi/SystemState.h"

#include "EngineLayer/SystemStateManager.h"

#include <array>

namespace EngineApi
{

namespace
{

constexpr std::array stateNames { "kBooting", "kAntitheft",     "kLocked",  "kNormalRun",
                                  "kISRMode", "kDummyPowerOff", "kPowerOff" };
constexpr std::array subStateNames { "kIdle", "kSchedule", "kSwitch", "kRecovery" };

template <typename Names>
const char* nameIn(const Names& names, int value)
{
    return value >= 0 && value < static_cast<int>(names.size()) ? names[static_cast<std::size_t>(value)] : "";
}

EngineLayer::SystemStateManager& manager()
{
    return *EngineLayer::SystemStateManager::getInstance();
}

} // namespace

const char* systemStateName(int state)
{
    return nameIn(stateNames, state);
}

const char* systemSubStateName(int subState)
{
    return nameIn(subStateNames, subState);
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
