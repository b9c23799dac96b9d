#include "factory/MsgSpecialHandler.h"

#include "EngineLayer/hostlink/HostCommands.h"

namespace Factory
{

Kernel::ComponentId MsgSpecialHandler::componentForHostCommand(int command) const
{
    return EngineLayer::hostCommand(command).receiver;
}

} // namespace Factory
