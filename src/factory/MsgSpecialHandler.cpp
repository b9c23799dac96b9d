#include "factory/MsgSpecialHandler.h"

#include "EngineLayer/HostCommands.h"

namespace Factory
{

Kernel::ComponentId MsgSpecialHandler::componentForHostCommand(int command) const
{
    return EngineLayer::hostCommand(command).receiver;
}

} // namespace Factory
