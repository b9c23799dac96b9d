#pragma once

/** The unit's power and lock state. Any thread. */
namespace EngineApi
{

enum SystemStateId : int {
    kBooting = 0,
    kAntitheft = 1,
    kLocked = 2,
    kNormalRun = 3,
    kISRMode = 4,
    kDummyPowerOff = 5,
    kPowerOff = 6
};

enum SystemSubState : int { kIdle = 0, kSchedule = 1, kSwitch = 2, kRecovery = 3 };

const char* systemStateName(int state);
const char* systemSubStateName(int subState);

int getSystemState();         ///< kPowerOff while there is none
int getPreviousSystemState(); ///< the state left by the last change of state
int getSystemSubState();
bool isSystemBusy(); ///< the sub-state is not kIdle
/** The page that ISR mode returns to, NUM_OF_PAGES when there is none. */
int getISRReturnPage();
/** On the state manager's own thread at once, from any other posted to it. */
void switchSystemState(int state, int subState);

} // namespace EngineApi
