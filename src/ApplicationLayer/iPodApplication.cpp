#include "ApplicationLayer/iPodApplication.h"

#include "kernel/ComponentRegistration.h"

namespace ApplicationLayer
{

namespace
{

const Kernel::ComponentRegistration registration { Kernel::iPodApplicationId,
                                                   []() -> Kernel::SystemTask* { return new iPodApplication; } };

} // namespace

iPodAudioHandler::iPodAudioHandler()
    : AppHandler(Pubhead::mbiPodAudio)
{
}

iPodVideoHandler::iPodVideoHandler()
    : AppHandler(Pubhead::mbiPodVideo)
{
}

ReariPodHandler::ReariPodHandler()
    : AppHandler(Pubhead::mbReariPod)
{
}

PandoraHandler::PandoraHandler()
    : AppHandler(Pubhead::mbiPodPandora)
{
}

iPodApplication::iPodApplication()
    : ApplicationTask({ new iPodAudioHandler, new iPodVideoHandler, new ReariPodHandler, new PandoraHandler })
{
}

} // namespace ApplicationLayer
