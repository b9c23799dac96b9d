#include "EngineLayer/system/LockStates.h"

#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Pages.h"
#include "kernel/MessageIds.h"

using namespace EngineApi;

namespace EngineLayer
{

namespace
{

/** Of MSG_SYS_ANTITHEFT_EXIT. */
constexpr int unlocked = 1;
constexpr int lock = 2;

} // namespace

void LockState::onEnter(int previousState)
{
    heldExit.reset();
    if (previousState == kBooting)
        requestShowPage(Pubhead::mbAntitheft, true);
}

void LockState::onAntitheftExit(int what)
{
    if (subState == kIdle)
        onIdleExit(what);
    else
        heldExit = what;
}

void LockState::onIdle()
{
    if (const auto exit = std::exchange(heldExit, std::nullopt))
        onIdleExit(*exit);
    else if (const auto request = manager.takeRequest())
    {
        onIdleRequest(*request);
        // One that starts nothing must not hold up the next.
        manager.postToSelf(stateIdle, 0, 0);
    }
}

bool SystemStateAntitheft::canSwitchTo(int state) const
{
    return state == kLocked || state == kNormalRun || state == kISRMode || state == kDummyPowerOff ||
           state == kPowerOff;
}

void SystemStateAntitheft::onIdleRequest(const RequestInfo& request)
{
    switch (request.action)
    {
    case AppAction::ToRun:
    case AppAction::ToPlay:
        beginSchedule(request);
        break;
    case AppAction::ToStop:
        // Stays in the queue for the state that follows.
        manager.queueRequest(request);
        endLock();
        break;
    default:
        manager.sendResult(request.page, scheduleRefused);
        break;
    }
}

void SystemStateAntitheft::onIdleExit(int what)
{
    if (what == lock)
        manager.switchState(kLocked, kIdle);
    else if (what == unlocked)
        endLock();
}

void SystemStateAntitheft::endLock()
{
    const int next = isDummyPowerOffCondition() ? kDummyPowerOff : isISRCondition() ? kISRMode : kNormalRun;
    manager.switchState(next, kIdle);
}

bool SystemStateLocked::canSwitchTo(int state) const
{
    return state == kAntitheft || state == kPowerOff;
}

void SystemStateLocked::onIdleRequest(const RequestInfo& request)
{
    if (request.action == AppAction::ToRun)
        beginSchedule(request);
}

void SystemStateLocked::onIdleExit(int what)
{
    if (what != unlocked)
        return;
    manager.switchState(kAntitheft, kIdle);
    // Once more, so that kAntitheft ends the lock.
    manager.postToSelf(Kernel::MSG_SYS_ANTITHEFT_EXIT, unlocked, 0);
}

} // namespace EngineLayer
