#include "ApplicationLayer/SetupApplication.h"

#include "kernel/ComponentRegistration.h"

namespace ApplicationLayer
{

namespace
{

const Kernel::ComponentRegistration registration { Kernel::setupApplicationId,
                                                   []() -> Kernel::SystemTask* { return new SetupApplication; } };

} // namespace

SetupHandler::SetupHandler()
    : AppHandler(Pubhead::mbSetup)
{
}

SetupApplication::SetupApplication()
    : ApplicationTask({ new SetupHandler })
{
}

} // namespace ApplicationLayer
