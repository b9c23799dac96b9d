#include "factory/MsgSpecialHandler.h"

#include "EngineApi/HostCommands.h"

namespace Factory
{

Kernel::ComponentId MsgSpecialHandler::componentForHostCommand(int command) const
{
    return EngineApi::hostCommand(command).receiver;
}

} // namespace Factory
