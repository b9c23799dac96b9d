#pragma once

#include "kernel/ComponentIds.h"
#include "kernel/Singleton.h"

namespace Factory
{

/** Which component gets a frame of the microcontroller. Any thread. */
class MsgSpecialHandler : public Kernel::Singleton<MsgSpecialHandler>
{
public:
    /** The receiver of MSG_HOST_EVENT for a command; 0 and 32 have no component, so that such an event is dropped. */
    Kernel::ComponentId componentForHostCommand(int command) const;

private:
    friend class Kernel::Singleton<MsgSpecialHandler>;
    MsgSpecialHandler() = default;
};

} // namespace Factory
