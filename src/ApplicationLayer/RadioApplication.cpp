#include "ApplicationLayer/RadioApplication.h"

#include "kernel/ComponentRegistration.h"

namespace ApplicationLayer
{

namespace
{

const Kernel::ComponentRegistration registration { Kernel::radioApplicationId,
                                                   []() -> Kernel::SystemTask* { return new RadioApplication; } };

} // namespace

AMHandler::AMHandler()
    : AppHandler(Pubhead::mbAM)
{
}

FMHandler::FMHandler()
    : AppHandler(Pubhead::mbFM)
{
}

WBHandler::WBHandler()
    : AppHandler(Pubhead::mbWB)
{
}

RadioApplication::RadioApplication()
    : ApplicationTask({ new AMHandler, new FMHandler, new WBHandler })
{
}

} // namespace ApplicationLayer
