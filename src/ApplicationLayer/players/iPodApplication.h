#pragma once

#include "ApplicationLayer/framework/ApplicationTask.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Remote.h"
#include "EngineApi/Settings.h"
#include "platform/base/Shared.h"

#include <memory>

namespace ApplicationLayer
{

/** How the iPod is connected, as its program said last. Any thread. */
struct iPodConnection
{
    Platform::Shared<bool> connected { false };
    Platform::Shared<bool> analogAudio { false }; ///< its sound comes through AUX 2
};

/** A page whose sound channel depends on how the iPod is connected. */
class iPodSourceHandler : public AppHandler
{
public:
    iPodSourceHandler(int page, std::shared_ptr<iPodConnection> sharedConnection);
    bool isResident() const override { return true; }
    int getAudioChannel() const override;
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;

private:
    const std::shared_ptr<iPodConnection> connection;
};

class iPodAudioHandler : public iPodSourceHandler
{
public:
    explicit iPodAudioHandler(const std::shared_ptr<iPodConnection>& shared)
        : iPodSourceHandler(Pubhead::mbiPodAudio, shared)
    {
    }
};

class iPodVideoHandler : public iPodSourceHandler
{
public:
    explicit iPodVideoHandler(const std::shared_ptr<iPodConnection>& shared)
        : iPodSourceHandler(Pubhead::mbiPodVideo, shared)
    {
    }
};

class ReariPodHandler : public AppHandler
{
public:
    ReariPodHandler();
    bool isResident() const override { return true; }
};

class PandoraHandler : public AppHandler
{
public:
    PandoraHandler();
};

/** The iPod program and the Pandora program: follows what is connected and over which channel it sounds. */
class iPodApplication : public ApplicationTask,
                        private EngineApi::DeviceStateInterface,
                        private EngineApi::SettingDataChangeListener,
                        private EngineApi::AppConnectStateInterface
{
public:
    iPodApplication();
    void initialize() override;
    void onRelease() override;
    void handleOwnMessage(const Kernel::SystemMessage& message) override;

private:
    explicit iPodApplication(std::shared_ptr<iPodConnection> sharedConnection);

    /** To itself: Pandora on the iPod came or went. */
    static constexpr juce::int32 msgPandoraChanged = 1;
    /** To itself: the iPod program's process has ended. */
    static constexpr juce::int32 msgProgramGone = 2;

    /** Called on the device status manager's thread; posts to the application's. */
    void onDeviceStateChanged(int kind) override;
    /** The data manager's thread. */
    void onSettingChanged(int index, int origin) override;
    bool acceptsKey(int index, int origin) override;
    /** Called on the program monitor's thread; posts to the application's. */
    void onAppConnectState(int appType, int state) override;

    void fromProgram(const Platform::RemoteMessage& message);
    void audioPath(juce::int32 path);
    void deviceEvent(juce::int32 what, juce::int32 value);
    /** Starts the program anew when that was asked for. */
    void programGone();
    void deviceAttached();
    void deviceAuthenticated(bool succeeded) const;
    void deviceDetached(bool unexpected);

    const std::shared_ptr<iPodConnection> connection;
    bool restarting = false; ///< as soon as its program has ended
};

} // namespace ApplicationLayer
