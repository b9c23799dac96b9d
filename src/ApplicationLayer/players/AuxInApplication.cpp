#include "ApplicationLayer/players/AuxInApplication.h"

#include "kernel/ComponentRegistration.h"

namespace ApplicationLayer
{

namespace
{

const Kernel::ComponentRegistration registration { Kernel::auxInApplicationId,
                                                   []() -> Kernel::SystemTask* { return new AuxInApplication; } };

} // namespace

AuxIn1Handler::AuxIn1Handler()
    : AppHandler(Pubhead::mbAuxin1)
{
}

AuxIn2Handler::AuxIn2Handler()
    : AppHandler(Pubhead::mbAuxin2)
{
}

RearAuxIn1Handler::RearAuxIn1Handler()
    : AppHandler(Pubhead::mbRearAV1)
{
}

RearAuxIn2Handler::RearAuxIn2Handler()
    : AppHandler(Pubhead::mbRearAV2)
{
}

AuxInApplication::AuxInApplication()
    : ApplicationTask({ new AuxIn1Handler, new AuxIn2Handler, new RearAuxIn1Handler, new RearAuxIn2Handler })
{
}

} // namespace ApplicationLayer
