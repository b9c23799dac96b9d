#include "ApplicationLayer/SiriusApplication.h"

#include "kernel/ComponentRegistration.h"

namespace ApplicationLayer
{

namespace
{

const Kernel::ComponentRegistration registration { Kernel::siriusApplicationId,
                                                   []() -> Kernel::SystemTask* { return new SiriusApplication; } };

} // namespace

SiriusHandler::SiriusHandler()
    : AppHandler(Pubhead::mbSirius)
{
}

SiriusApplication::SiriusApplication()
    : ApplicationTask({ new SiriusHandler })
{
}

} // namespace ApplicationLayer
