#include "ApplicationLayer/GeneralApplication.h"

#include "kernel/ComponentRegistration.h"

namespace ApplicationLayer
{

namespace
{

const Kernel::ComponentRegistration registration { Kernel::generalApplicationId,
                                                   []() -> Kernel::SystemTask* { return new GeneralApplication; } };

} // namespace

StandbyHandler::StandbyHandler()
    : AppHandler(Pubhead::mbStandby)
{
}

EQHandler::EQHandler()
    : AppHandler(Pubhead::mbEQ)
{
}

AntitheftHandler::AntitheftHandler()
    : AppHandler(Pubhead::mbAntitheft)
{
}

AVOffHandler::AVOffHandler()
    : AppHandler(Pubhead::mbAVOff)
{
}

CameraHandler::CameraHandler()
    : AppHandler(Pubhead::mbCamera)
{
}

GeneralApplication::GeneralApplication()
    : ApplicationTask({ new StandbyHandler, new EQHandler, new AntitheftHandler, new AVOffHandler, new CameraHandler })
{
}

} // namespace ApplicationLayer
