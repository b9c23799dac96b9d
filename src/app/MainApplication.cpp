#include "app/MainApplication.h"

#include "EngineLayer/autotest/CATestSessionManager.h"
#include "ProjectDepend/Bars.h"
#include "diagnostics/ServiceManager.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/base/Threads.h"
#include "platform/config/Resources.h"
#include "platform/devices/UnitLines.h"
#include "platform/record/Recorder.h"
#include "platform/settings/SetupStore.h"
#include "platform/sound/Sound.h"

#include <cstdlib>

namespace ServiceManager = Diagnostics::ServiceManager;

namespace
{

constexpr Platform::Log logger { "app/MainApplication", "MainApplication" };

void writeDriverSetting()
{
    if (const auto result = Platform::writeRegistryValue("\\Drivers\\AppleAccessory\\", "HardwareType", 1);
        result.failed())
        Platform::debugPrint("%s\n", result.getErrorMessage().toRawUTF8());
}

} // namespace

MainApplication::MainApplication()
{
    Platform::installExceptionHook();
    writeDriverSetting();
}

MainApplication::~MainApplication()
{
    Platform::ResourceAutoDelete();
    Bar::removeBars(); // those of an engine that was never shut down
}

void MainApplication::initialise(const juce::String&)
{
    for (const auto& problem : Platform::lineProblems())
        logger().error("%s", problem.c_str());
    Platform::AppConfig::loadFont();
    juce::MessageManager::getInstance()->registerBroadcastListener(this);
    engineStart.begin({ .held = [] { ServiceManager::reportAlive("The camera has the screen."); },
                        .started =
                            [this]
                        {
                            ServiceManager::reportAlive("The engine runs.");
                            diagnostics.start();
                        } });
    mainWindow.setVisible(false);
}

void MainApplication::shutdown()
{
    ServiceManager::reportStopping();
    diagnostics.stop();
    if (auto* recorder = Platform::Recorder::active())
        recorder->finish();
    juce::MessageManager::getInstance()->deregisterBroadcastListener(this);
    Kernel::SystemEngine::getInstance()->stop();
    // Its thread belongs to no group, and sends through what is released now.
    if (auto* session = EngineLayer::CATestSessionManager::getExisting())
        session->stop();
    // The alert's thread is the last one that may hang.
    if (!Platform::hasStragglers())
        Bar::removeBars();
    // A thread that does not end may use anything at any moment, so nothing is taken down under it. What the user has
    // set is stored all the same.
    if (Platform::hasStragglers())
    {
        if (auto* volumes = Dsp::DSPSettingHelperImpl::getExisting())
            volumes->storeNow();
        Platform::VX_ReleaseSetupInfo();
        std::quick_exit(EXIT_SUCCESS);
    }
    Kernel::SystemEngine::getInstance()->release();
    Platform::releaseSound();
}

void MainApplication::actionListenerCallback(const juce::String& message)
{
    if (message == "showWindow")
        mainWindow.setVisible(true);
    else if (message == "hideWindow")
        mainWindow.setVisible(false);
}
