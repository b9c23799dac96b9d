// Which state and which source the unit begins with.
#include "EngineApi/HostLink.h"
#include "EngineApi/Pages.h"
#include "EngineApi/SystemState.h"
#include "EngineLayer/devices/DeviceStatusManager.h"
#include "factory/ScheduleFactroy.h"
#include "platform/base/Logger.h"

namespace EngineLayer
{

namespace
{

constexpr Platform::Log logger { "EngineLayer/DeviceStatusManager", "DeviceStatusManager" };

constexpr int antitheftLeftMs = 2000;

/** Sources whose device may appear after the start. */
bool mayStillAppear(int source)
{
    switch (source)
    {
    case EngineApi::SRC_IPOD:
    case EngineApi::SRC_SD:
    case EngineApi::SRC_USB:
    case EngineApi::SRC_DISC:
    case EngineApi::SRC_BT_AUDIO:
        return true;
    default:
        return false;
    }
}

} // namespace

void DeviceStatusManager::startWith(int page)
{
    EngineApi::sendCommand(EngineApi::EVENT_MUTE_STATE, { 1 });
    startPage = page;
    EngineApi::switchSystemState(firstState(conditions), EngineApi::kIdle);
}

int DeviceStatusManager::firstState(const StartConditions& conditions)
{
    constexpr int lockedModes[] = { 2, 3 };
    for (const int mode : lockedModes)
        if (conditions.antitheftMode == mode)
            return conditions.antitheftValue != 0 ? EngineApi::kLocked : EngineApi::kAntitheft;
    return conditions.isrMode ? EngineApi::kISRMode : EngineApi::kNormalRun;
}

void DeviceStatusManager::startSourceWhenReady()
{
    if (EngineApi::getPreviousSystemState() == EngineApi::kAntitheft)
        startTimer(antitheftLeftTimer, antitheftLeftMs);
    else
        runStartSrc();
}

void DeviceStatusManager::runStartSrc()
{
    logger().info("runStartSrc");
    const int page = startPage;
    if (Factory::ScheduleFactroy::getInstance()->checkNormalSource(page) == page)
        runPage(page);
    else if (mayStillAppear(EngineApi::getSource(page)))
        return;
    else
        runPage(Factory::ScheduleFactroy::getInstance()->defaultSource());
    startPage = Pubhead::NUM_OF_PAGES;
}

void DeviceStatusManager::runPage(int page)
{
    if (Factory::ScheduleFactroy::getInstance()->isTunerPage(page))
        page = Factory::ScheduleFactroy::getInstance()->defaultSource();
    if (EngineApi::isAvailable(page))
        EngineApi::requestShowPage(page, true);
}

} // namespace EngineLayer
