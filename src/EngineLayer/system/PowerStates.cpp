#include "EngineLayer/system/PowerStates.h"

#include "EngineApi/HostLink.h"
#include "EngineApi/Pages.h"
#include "EngineApi/ProgramTimes.h"
#include "EngineApi/Remote.h"
#include "kernel/MessageIds.h"

using namespace EngineApi;

namespace EngineLayer
{

void SystemStateBooting::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32, const Kernel::Payload&)
{
    if (id == Kernel::MSG_SCHEDULE_REQUEST)
        manager.sendResult(arg1, scheduleRefused);
}

void SystemStatePowerOff::onEnter(int)
{
    // A switch that was cut short must not be taken for the programs' time-out.
    manager.stopTimeOut();
    manager.requestLog().cut();
}

void SystemStatePowerOff::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32, const Kernel::Payload&)
{
    switch (id)
    {
    case stateBeginPowerOff:
        begin();
        break;
    case Kernel::MSG_POWER_OFF_CONFIRM:
        onConfirmed(arg1);
        break;
    case Kernel::MSG_SYS_TIMER:
        if (step == Step::waiting)
            sendReady();
        break;
    default:
        break;
    }
}

void SystemStatePowerOff::begin()
{
    // Asked twice, the unit goes off once.
    if (step != Step::entered)
        return;
    for (const int page : { static_cast<int>(Pubhead::mbNavi), static_cast<int>(Pubhead::mbSirius),
                            static_cast<int>(Pubhead::mbBTPhone), getNormalSource(), getRearPage() })
        if (isAppConnected(appTypeOfPage(page)) && waitSet.insert(page).second)
            notifyPage(page);
    if (waitSet.empty())
    {
        sendReady();
        return;
    }
    step = Step::waiting;
    manager.startTimeOut(powerOffAnswerMs);
}

void SystemStatePowerOff::onConfirmed(int page)
{
    waitSet.erase(page);
    if (step == Step::waiting && waitSet.empty())
        sendReady();
}

void SystemStatePowerOff::sendReady()
{
    step = Step::ready;
    manager.stopTimeOut();
    sendCommand(EVENT_POWER_OFF_READY);
}

} // namespace EngineLayer
