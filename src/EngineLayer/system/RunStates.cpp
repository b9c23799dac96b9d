#include "EngineLayer/system/RunStates.h"

#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Pages.h"
#include "factory/ScheduleFactroy.h"

using namespace EngineApi;
using Factory::ScheduleFactroy;

namespace EngineLayer
{

namespace
{

bool isBootOrLock(int state)
{
    return state == kBooting || state == kAntitheft;
}

} // namespace

bool SystemStateNormalRun::canSwitchTo(int state) const
{
    return state == kISRMode || state == kDummyPowerOff || state == kPowerOff;
}

void SystemStateNormalRun::onEnter(int previousState)
{
    if (isBootOrLock(previousState))
        startSourceWhenReady();
}

bool SystemStateISRMode::canSwitchTo(int state) const
{
    return state == kNormalRun || state == kDummyPowerOff || state == kPowerOff;
}

void SystemStateISRMode::onEnter(int previousState)
{
    if (previousState == kNormalRun)
        returnPage = isNormalSource(getNormalSource()) ? getNormalSource() : static_cast<int>(Pubhead::NUM_OF_PAGES);
    if (previousState == kNormalRun || isBootOrLock(previousState))
        requestShowPage(Pubhead::mbAVOff, true);
}

void SystemStateISRMode::onExit(int nextState)
{
    if (nextState == kNormalRun)
        requestShowPage(ScheduleFactroy::getInstance()->checkNormalSource(returnPage), true);
}

void SystemStateISRMode::onIdleRequest(const RequestInfo& request)
{
    if (request.action != AppAction::ToStop)
    {
        SchedulingState::onIdleRequest(request);
        return;
    }
    manager.queueRequest(request);
    manager.switchState(kNormalRun, kIdle);
}

bool SystemStateDummyPowerOff::canSwitchTo(int state) const
{
    return state == kNormalRun || state == kISRMode || state == kPowerOff;
}

void SystemStateDummyPowerOff::onEnter(int previousState)
{
    if (previousState == kNormalRun || previousState == kISRMode)
        rememberPages();
    requestShowPage(Pubhead::mbAVOff, true);
}

void SystemStateDummyPowerOff::rememberPages()
{
    int front = getNormalSource();
    if (front == Pubhead::NUM_OF_PAGES)
        front = getStartPage();
    if (front == Pubhead::mbAVOff)
        front = ScheduleFactroy::getInstance()->defaultSource();
    resumeFront = isNormalSource(front) ? front : static_cast<int>(Pubhead::NUM_OF_PAGES);
    const int rear = getRearPage();
    resumeRear = isRearPage(rear) ? rear : static_cast<int>(Pubhead::mbRearOff);
}

void SystemStateDummyPowerOff::onExit(int nextState)
{
    if (nextState == kNormalRun && getStartPage() != Pubhead::NUM_OF_PAGES)
        startSourceWhenReady();
    else if (nextState == kNormalRun || nextState == kISRMode)
        resumePages();
}

void SystemStateDummyPowerOff::resumePages()
{
    const int front = ScheduleFactroy::getInstance()->checkNormalSource(resumeFront);
    const int rear = ScheduleFactroy::getInstance()->checkRearPage(resumeRear);
    const int shown = getFrontShow();
    if (shown == Pubhead::mbAVOff || shown == Pubhead::mbCarInfo)
        requestShowPage(front, true);
    else
        requestPageState(front, AppAction::ToPlay, true);
    requestPageState(rear, AppAction::ToPlay, true);
}

} // namespace EngineLayer
