#include "app/EngineStart.h"

#include "ProjectDepend/Bars.h"
#include "factory/SystemFactory.h"
#include "kernel/SystemEngine.h"
#include "platform/config/Resources.h"

namespace
{

constexpr int cameraTimer = 1;
constexpr int cameraPollMs = 100;

} // namespace

void EngineStart::begin(Listener toldOf)
{
    listener = std::move(toldOf);
    for (const auto* pack : Platform::resourcePacks)
        Platform::CVXResPathManager::getInstance()->addResPath(Platform::AppConfig::getResourcePath() + pack, {});
    if (!waitForCamera())
        startEngine();
}

void EngineStart::timerCallback(int timerId)
{
    if (timerId != cameraTimer || waitForCamera())
        return;
    startEngine();
    stopTimer(cameraTimer);
}

bool EngineStart::waitForCamera()
{
    if (!cameraControl.isSystemControl())
        return false;
    listener.held();
    startTimer(cameraTimer, cameraPollMs);
    return true;
}

void EngineStart::startEngine()
{
    Bar::createBars();
    Factory::SystemFactory::getInstance()->build();
    Kernel::SystemEngine::getInstance()->start();
    cameraControl.retrieveControl();
    listener.started();
}
