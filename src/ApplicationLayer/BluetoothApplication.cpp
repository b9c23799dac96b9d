#include "ApplicationLayer/BluetoothApplication.h"

#include "EngineApi/DeviceStatus.h"
#include "kernel/ComponentRegistration.h"

namespace ApplicationLayer
{

namespace
{

const Kernel::ComponentRegistration registration { Kernel::bluetoothApplicationId,
                                                   []() -> Kernel::SystemTask* { return new BluetoothApplication; } };

} // namespace

BTPhoneHandler::BTPhoneHandler()
    : AppHandler(Pubhead::mbBTPhone)
{
}

BTAudioHandler::BTAudioHandler()
    : AppHandler(Pubhead::mbBTAudio)
{
}

void BTPhoneHandler::adjustScheduleInfo(EngineLayer::ScheduleInfo& info)
{
    if (EngineApi::isCallCondition())
        info.audioChannel = eAudioWince;
    else
        info.playLevel = info.audioLevel = EngineLayer::PageScheduleConfig::noCompetition;
}

BluetoothApplication::BluetoothApplication()
    : ApplicationTask({ new BTPhoneHandler, new BTAudioHandler })
{
}

} // namespace ApplicationLayer
