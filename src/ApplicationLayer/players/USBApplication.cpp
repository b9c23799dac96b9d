#include "ApplicationLayer/players/USBApplication.h"

#include "EngineApi/AutoTestSession.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineApi/Settings.h"
#include "EngineLayer/devices/UnitOutputs.h"
#include "dsp/AudioServices.h"
#include "kernel/ComponentRegistration.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "lowlayer/BytePool.h"
#include "platform/base/Logger.h"
#include "platform/settings/SetupIndex.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;

namespace
{

const Kernel::ComponentRegistration registration { Kernel::usbApplicationId,
                                                   []() -> Kernel::SystemTask* { return new USBApplication; } };

constexpr int hubResetMs = 500;
constexpr int hubOffMs = 50;

/** Second byte of a command of the test equipment, with arg1 of RMSG_USB_CONTROL. */
struct TestCommand
{
    std::uint8_t request;
    juce::int32 control;
    bool answersArgument; ///< instead of 1
};
constexpr TestCommand testCommands[] = { { 5, 3, false }, { 10, 4, true }, { 11, 5, false } };

void setEffect(bool on)
{
    if (auto* chips = Provided<Dsp::ChipManager>::get())
        chips->getEQService().setDmeState(on);
}

} // namespace

USBAudioHandler::USBAudioHandler()
    : AppHandler(mbUSBAudio)
{
}

void USBAudioHandler::decorateCommandLine(SwitchType, const PageStates&, const PageStates&,
                                          Platform::AppCommandLine& commandLine)
{
    if (commandLine.isSourceEnter())
        setEffect(getSettingInt(Platform::dmeSetting) != 0);
    else if (commandLine.isSourceExit())
        setEffect(false);
}

USBVideoHandler::USBVideoHandler()
    : AppHandler(mbUSBVideo)
{
}

USBApplication::USBApplication()
    : ApplicationTask({ new USBAudioHandler, new USBVideoHandler })
    , SystemTimer(Kernel::usbApplicationId)
{
}

void USBApplication::initialize()
{
    ApplicationTask::initialize();
    addDeviceStateListener(this);
}

void USBApplication::onRelease()
{
    removeDeviceStateListener(this);
    ApplicationTask::onRelease();
}

void USBApplication::onDeviceStateChanged(int kind)
{
    if (kind == usbStorage)
        Kernel::postSystemMessage(Kernel::usbApplicationId, msgStorageChanged, 0, 0);
}

void USBApplication::handleOwnMessage(const Kernel::SystemMessage& message)
{
    switch (message.id)
    {
    case msgStorageChanged:
        return storageChanged();
    case Kernel::MSG_SYS_TIMER:
        if (message.arg1 == hubResetTimer)
            resetHub();
        return;
    case Kernel::MSG_AUTOTEST_COMMAND:
        return autoTest(LowLayer::bytesOf(message.payload));
    default:
        return;
    }
}

void USBApplication::storageChanged()
{
    stopTimer(hubResetTimer);
    if (!getDeviceState(usbStorage))
        startTimer(hubResetTimer, hubResetMs);
    else if (getNormalSource() == mbiPodPandora)
        requestShowPage(mbUSBAudio, true);
}

void USBApplication::resetHub()
{
    stopTimer(hubResetTimer);
    Platform::debugPrint("Reset usb hub \r\n");
    pulseOutputs(hubOffMs); // what the hub needs to notice
}

void USBApplication::autoTest(std::span<const std::uint8_t> request)
{
    constexpr std::size_t head = 2;
    if (!getEnterTestMode() || request.size() < head)
        return;
    const std::uint8_t argument = request.size() > head ? request[head] : 0;
    std::vector<std::uint8_t> reply(request.begin(), request.begin() + head);
    for (const auto& command : testCommands)
        if (command.request == request[1])
        {
            sendRemoteMessage(AppUSB, RMSG_USB_CONTROL, command.control, argument);
            reply.push_back(command.answersArgument ? argument : 1);
        }
    answerAutoTest(reply);
}

} // namespace ApplicationLayer
