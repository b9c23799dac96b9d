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

void EngineStart::begin(std::function<void()> whenStarted)
{
    started = std::move(whenStarted);
    for (const auto* pack : { "CommonRes.spp", "MainRes.spp" })
        Platform::CVXResPathManager::getInstance()->addResPath(Platform::AppConfig::getResourcePath() + pack, {});
    if (cameraControl.isSystemControl())
        startTimer(cameraTimer, cameraPollMs);
    else
        startEngine();
}

void EngineStart::timerCallback(int timerId)
{
    if (timerId != cameraTimer || cameraControl.isSystemControl())
        return;
    startEngine();
    stopTimer(cameraTimer);
}

void EngineStart::startEngine()
{
    Bar::createBars();
    Factory::SystemFactory::getInstance()->build();
    Kernel::SystemEngine::getInstance()->start();
    cameraControl.retrieveControl();
    if (started)
        started();
}
