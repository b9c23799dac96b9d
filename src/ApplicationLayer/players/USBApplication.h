#pragma once

#include "ApplicationLayer/framework/ApplicationTask.h"
#include "EngineApi/DeviceStatus.h"

#include <span>

namespace ApplicationLayer
{

/** Switches the DSP's dynamic effect, which is for compressed music: on while USB plays, if its setting is on. */
class USBAudioHandler : public AppHandler
{
public:
    USBAudioHandler();
    bool isResident() const override { return true; }
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;
};

class USBVideoHandler : public AppHandler
{
public:
    USBVideoHandler();
};

/** The program that plays USB storage; resets the hub when the storage has gone. */
class USBApplication : public ApplicationTask, public Kernel::SystemTimer, private EngineApi::DeviceStateInterface
{
public:
    static constexpr int hubResetTimer = 1;

    USBApplication();
    void initialize() override;
    void onRelease() override;
    void handleOwnMessage(const Kernel::SystemMessage& message) override;

private:
    /** To itself: the storage came or went. */
    static constexpr juce::int32 msgStorageChanged = 1;

    /** Called on the device status manager's thread; posts to the application's. */
    void onDeviceStateChanged(int kind) override;
    void storageChanged();
    void resetHub();
    static void autoTest(std::span<const std::uint8_t> request);
};

} // namespace ApplicationLayer
