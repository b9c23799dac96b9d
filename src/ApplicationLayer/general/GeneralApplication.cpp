#include "ApplicationLayer/general/GeneralApplication.h"

#include "EngineApi/Bars.h"
#include "EngineApi/KeyCodes.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "kernel/ComponentRegistration.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Logger.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace Pubhead;
using EngineApi::AppAction;
using EngineApi::PageStates;
using EngineApi::SwitchType;
using Platform::AppCommandLine;

namespace
{

const Kernel::ComponentRegistration registration { Kernel::generalApplicationId,
                                                   []() -> Kernel::SystemTask* { return new GeneralApplication; } };

constexpr int closeMs = 6000;

constexpr int showMs = 5000;

/** Private message: the trigger input has changed. */
constexpr juce::int32 triggerChanged = 1;

/** arg1 of RMSG_ANTITHEFT_EVENT, and of MSG_SYS_ANTITHEFT_EXIT for it. */
enum AntitheftReport : juce::int32 { reportsLock = Platform::unitLocked, reportsUnlock = Platform::unitUnlocked };
enum AntitheftExit : juce::int32 { exitUnlocked = 1, exitLock = 2 };

void attachState(AppCommandLine& commandLine, juce::int32 state)
{
    auto extra = Platform::Bundle::obtain();
    extra->putInt("state", state);
    commandLine.putExtraData(std::move(extra));
}

void leaveAntitheft(AntitheftExit result)
{
    Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_SYS_ANTITHEFT_EXIT, result, 0);
}

} // namespace

StandbyHandler::StandbyHandler()
    : AppHandler(mbStandby)
{
}

AVOffHandler::AVOffHandler()
    : AppHandler(mbAVOff)
{
}

EQHandler::EQHandler()
    : AppHandler(mbEQ)
{
}

void EQHandler::decorateCommandLine(SwitchType, const PageStates&, const PageStates&, AppCommandLine& commandLine)
{
    if (commandLine.isPageHide())
        getTimers().startTimer(closeTimer, closeMs);
    else if (commandLine.isPageShow())
        getTimers().stopTimer(closeTimer);
}

void EQHandler::onTimer(int)
{
    if (!isOnTop())
        requestState(AppAction::ToStop, true);
}

AntitheftHandler::AntitheftHandler()
    : AppHandler(mbAntitheft)
{
}

void AntitheftHandler::decorateCommandLine(SwitchType, const PageStates&, const PageStates&,
                                           AppCommandLine& commandLine)
{
    if (commandLine.isFrontShow())
        attachState(commandLine, getAntitheftValue());
}

CameraHandler::CameraHandler()
    : AppHandler(mbCamera)
{
}

void CameraHandler::onKey(juce::int32 key, juce::int32)
{
    if (key == KEY_SHOWCAMERA)
        toggle();
    else if (key == KEY_INFOBAR_SWITCH_SPEAKER && cameraOn)
        restartShowTimer();
}

void CameraHandler::toggle()
{
    if (auto* bar = Provided<FavoriteBar>::get(); bar != nullptr && bar->isShown())
        bar->postMessage(Kernel::MSG_FAVOURITES_HIDE, 0, 0, nullptr);
    getTimers().stopTimer(showTimer);
    cameraOn = !cameraOn;
    requestState(cameraOn ? AppAction::ToRun : AppAction::ToStop, true);
}

void CameraHandler::restartShowTimer()
{
    getTimers().startTimer(showTimer, showMs);
}

void CameraHandler::decorateCommandLine(SwitchType, const PageStates&, const PageStates&, AppCommandLine& commandLine)
{
    if (commandLine.isFrontShow())
    {
        attachState(commandLine, getDeviceState(cameraVideo) ? 1 : 0);
        getTimers().stopTimer(showTimer);
    }
    else if (commandLine.isPageHide())
        restartShowTimer();
}

void CameraHandler::onTimer(int)
{
    if (cameraOn && !isOnTop())
        requestState(AppAction::ToRun, true);
}

GeneralApplication::GeneralApplication()
    : GeneralApplication(new CameraHandler)
{
}

GeneralApplication::GeneralApplication(juce::ReferenceCountedObjectPtr<CameraHandler> cameraHandler)
    : ApplicationTask(
          { new StandbyHandler, new EQHandler, new AntitheftHandler, new AVOffHandler, cameraHandler.get() })
    , camera(std::move(cameraHandler))
{
}

void GeneralApplication::initialize()
{
    ApplicationTask::initialize();
    addDeviceStateListener(this);
}

void GeneralApplication::onRelease()
{
    removeDeviceStateListener(this);
    ApplicationTask::onRelease();
}

void GeneralApplication::handleOwnMessage(const Kernel::SystemMessage& message)
{
    if (message.id == triggerChanged)
        return followTrigger();
    if (message.id != Kernel::MSG_APP_REMOTE)
        return;
    const auto* remote = Kernel::payloadAs<Platform::RemoteMessage>(message.payload);
    // No other program may unlock the unit.
    if (remote == nullptr || remote->what != RMSG_ANTITHEFT_EVENT || remote->appType != AppAntitheft)
        return;
    if (remote->arg1 == reportsUnlock)
        leaveAntitheft(exitUnlocked);
    else if (remote->arg1 == reportsLock)
        leaveAntitheft(exitLock);
}

void GeneralApplication::onDeviceStateChanged(int kind)
{
    if (kind == triggerInput)
        return Kernel::postSystemMessage(getId(), triggerChanged, 0, 0);
    if (kind != cameraVideo)
        return;
    const int signal = getDeviceState(cameraVideo) ? 1 : 0;
    Platform::debugPrint("General  camera signal =%d \r\n", signal);
    sendRemoteMessage(AppCamera, RMSG_GENERAL_NOTIFY, signal, 0);
}

void GeneralApplication::followTrigger() const
{
    // The key is handled here and now: posted, it could be overtaken by the next change of the input.
    if (getDeviceState(triggerInput) != camera->isCameraOn())
        camera->onKey(KEY_SHOWCAMERA, 0);
}

} // namespace ApplicationLayer
