#include "ApplicationLayer/MainMenuApplication.h"

#include "kernel/ComponentRegistration.h"

namespace ApplicationLayer
{

namespace
{

const Kernel::ComponentRegistration registration { Kernel::mainMenuApplicationId,
                                                   []() -> Kernel::SystemTask* { return new MainMenuApplication; } };

} // namespace

MainMenuHandler::MainMenuHandler()
    : AppHandler(Pubhead::mbMainMenu)
{
}

MainMenuApplication::MainMenuApplication()
    : ApplicationTask({ new MainMenuHandler })
{
}

} // namespace ApplicationLayer
