#include "Extend/ExeMonitor.h"

#include "EngineApi/Catalogue.h"
#include "EngineApi/ProgramTimes.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "kernel/Trace.h"
#include "lowlayer/RemotecommDev.h"
#include "platform/base/CommandLine.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/base/Pubhead.h"
#include "platform/screen/Window.h"

#include <algorithm>

namespace Extend
{

using namespace EngineApi;
using Platform::IPCMsg::MessageHelper;

namespace
{

constexpr Platform::Log logger { "Extend/ExeMonitor_win32", "ExeMonitor" };

constexpr int anyProcess = -1;
constexpr const char* commandLineOption = "--command-line";

Platform::Counter failedStarts { "programs.starts-failed", "programs that could not be started" };

juce::String appText(int appType)
{
    return juce::String("AppType: ") + Pubhead::appTypeName(appType);
}

bool holdsNothing(const Platform::Bundle::Ptr& bundle)
{
    return bundle == nullptr || bundle->isEmpty();
}

void sendCommandLine(int appType, const Platform::Bundle::Ptr& bundle)
{
    if (holdsNothing(bundle))
        return;
    Kernel::Cause::current().reached(Kernel::Cause::order);
    sendRemoteMessage(appType, RMSG_COMMAND_LINE, 0, 0, bundle);
}

/** The command line as JSON, "" for none. */
juce::String renderCommandLine(const Platform::Bundle::Ptr& bundle, bool background)
{
    if (holdsNothing(bundle) && !background)
        return {};
    if (Platform::RemoteObjFormat::generateCommandLine(bundle) != nullptr)
        return Platform::CmdLineHelper::genCommandLine(bundle);
    const auto stayHidden = Platform::AppCommandLine::genCmdPageHide(Pubhead::NUM_OF_PAGES, Pubhead::NUM_OF_PAGES);
    if (!holdsNothing(bundle))
        stayHidden->putExtraData(bundle);
    return Platform::CmdLineHelper::genCommandLine(Platform::RemoteObjFormat::formatCommandLine(*stayHidden));
}

struct RunningProgram
{
    bool found = false;
    Platform::ProcessHandle process; ///< null when it cannot be told
};

/** Past the queue of the channel, so that the answer goes out before everything that waits for the program there. */
void acknowledgeHello(int appType)
{
    auto answer = Platform::RemoteMessage::obtain();
    answer->what = RMSG_APP_HELLO_ACK;
    answer->arg1 = appType;
    const Kernel::TraceScope scope(Kernel::Trace::Kind::remoteSent, appType, answer->what, answer->arg1, 0, true);
    if (!MessageHelper::postMessage(appType, answer))
        sendRemoteMessage(appType, answer);
    Platform::RemoteMessage::recycle(std::move(answer));
}

/** The foreign navigation program is known by its window, every other by the owner of its name on the bus. */
RunningProgram findRunningProgram(int appType)
{
    int pid = -1;
    if (appType == Pubhead::AppNavi)
    {
        const auto window = Platform::findWindow(MessageHelper::getDestName(appType));
        if (window == Platform::noWindow)
            return {};
        pid = Platform::windowProcess(window);
    }
    else
    {
        if (!MessageHelper::isPresent(appType))
            return {};
        pid = MessageHelper::ownerProcess(appType);
    }
    if (pid < 0)
        return { true, nullptr };
    // A process that is gone takes its window or name with it, even where the news has not arrived yet.
    auto process = Platform::openProcess(pid);
    return { process != nullptr, process };
}

} // namespace

ExeMonitor::ExeMonitor()
    : Kernel::SystemTimer(Kernel::exeMonitorId)
    , monitor(lock, [this](int appType) { handleProcessEnd(appType); })
{
}

ExeMonitor::~ExeMonitor()
{
    monitor.stop();
}

void ExeMonitor::initialize()
{
    monitor.startThread();
}

void ExeMonitor::onStop()
{
    monitor.stop();
    stopTimer(heartbeatTimer);
    stopTimer(closingTimer);
}

bool ExeMonitor::launchApp(int appType, int page, const juce::String& path, Platform::Bundle::Ptr bundle,
                           bool background)
{
    const std::lock_guard launching(launchLock);
    if (!background)
        wantedPage = page;
    return launch({ appType, page, path, std::move(bundle), background });
}

bool ExeMonitor::showOrLaunchApp(int appType, int page, const juce::String& path, Platform::Bundle::Ptr bundle)
{
    const std::lock_guard launching(launchLock);
    if (getAppState(appType) != kConnected || mustWait(appType))
        return launchApp(appType, page, path, std::move(bundle), false);
    wantedPage = page;
    setNextPage(page);
    sendCommandLine(appType, bundle);
    return true;
}

bool ExeMonitor::isEnding(int appType) const
{
    const std::lock_guard guard(lock);
    const auto state = getAppState(appType);
    if (state == kClosing || state == kDisconnect)
        return state == kClosing;
    const auto process = monitor.getProcess(appType);
    if (process == nullptr)
        return false;
    // A process that ends loses its name on the channel before it is gone: it hears nothing any more.
    return !process->isRunning() ||
           (state == kConnected && appType != Pubhead::AppNavi && !MessageHelper::isPresent(appType));
}

bool ExeMonitor::mustWait(int appType) const
{
    return isEnding(appType) ||
           std::ranges::any_of(launchQueue, [=](const auto& request) { return request.appType == appType; });
}

bool ExeMonitor::launch(const LaunchRequest& request)
{
    const int appType = request.appType;
    if (mustWait(appType))
    {
        launchQueue.push_back(request);
        startTimer(closingTimer, closingPeriodMs);
        return false;
    }
    const int state = getAppState(appType);
    const bool isTakenOver = state == kDisconnect && takeOver(appType);
    const bool isNew = state == kDisconnect && !isTakenOver;
    if (isNew && !createProgram(request))
        return false;
    // Before the program is told: the view manager forgets a page that is asked for before it knows it. A new process
    // has its command line, and its hello waits for the end of the launch. A launch that has waited may find another
    // page wanted instead.
    if (!request.background && request.page == wantedPage)
        setNextPage(request.page);
    if (state == kStarting || isTakenOver)
        postCommandLine(appType, request.bundle);
    else if (!isNew)
        sendCommandLine(appType, request.bundle);
    return true;
}

bool ExeMonitor::takeOver(int appType)
{
    const auto running = findRunningProgram(appType);
    if (!running.found)
        return false;
    setAppState(appType, kConnected);
    monitor.watchProcess(appType, running.process);
    return true;
}

bool ExeMonitor::createProgram(const LaunchRequest& request)
{
    const int appType = request.appType;
    const auto refuse = [&](const juce::String& why)
    {
        logger().error(appText(appType) + " | " + why);
        ++failedStarts;
        const std::lock_guard guard(lock);
        lives[appType].problem = why;
        return false;
    };
    if (request.path.isEmpty())
    {
        return refuse("no program for page " + juce::String(Pubhead::pageName(request.page)));
    }
    juce::StringArray arguments;
    if (appType != Pubhead::AppNavi)
        if (const auto commandLine = renderCommandLine(request.bundle, request.background); commandLine.isNotEmpty())
            arguments = { commandLineOption, commandLine };
    const auto process = Platform::createProcess(request.path, arguments);
    if (process == nullptr)
    {
        return refuse("cannot be started: " + request.path);
    }
    MessageHelper::expectProcess(appType, process->getPid());
    // The state first: a process that has ended already takes it back as soon as it is watched.
    setAppState(appType, kStarting);
    monitor.watchProcess(appType, process);
    return true;
}

void ExeMonitor::postCommandLine(int appType, const Platform::Bundle::Ptr& bundle)
{
    if (!holdsNothing(bundle))
        Kernel::postSystemMessage(Kernel::exeMonitorId, msgCommandLine, appType, 0, bundle.get());
}

void ExeMonitor::terminateApp(int appType)
{
    Platform::ProcessHandle process;
    {
        const std::lock_guard guard(lock);
        if (getAppState(appType) != kDisconnect)
            process = monitor.getProcess(appType);
    }
    if (process == nullptr)
        return;
    logger().info(appText(appType) + " | terminated");
    process->terminate();
}

void ExeMonitor::closeApp(int appType)
{
    // A launch that has found the program connected sends it its command line before the program is told to end.
    const std::lock_guard launching(launchLock);
    {
        const std::lock_guard guard(lock);
        if (getAppState(appType) == kDisconnect)
            return;
        // Before the program is told: one that ends at once would be left closing for ever.
        setAppState(appType, kClosing);
    }
    // Past the queue of the channel, which takes nothing for a program that is closing.
    auto stop = Platform::RemoteMessage::obtain();
    stop->what = RMSG_SOURCE_STOP;
    stop->arg1 = stop->arg2 = 0;
    const bool told = LowLayer::RemotecommDev::getInstance()->postToApp(appType, stop);
    Platform::RemoteMessage::recycle(std::move(stop));
    if (!told) // It would be left closing.
        terminateApp(appType);
}

void ExeMonitor::setAppState(int appType, int state)
{
    const std::lock_guard guard(lock);
    auto& stored = appStates.try_emplace(appType, kDisconnect).first->second;
    if (stored == state)
        return;
    logger().info(appText(appType) + " | State: " + programStateName(state));
    auto& life = lives[appType];
    life.wasClosed = stored == kClosing;
    stored = state;
    life.since = Platform::Clock::now();
    life.starts += state == kStarting ? 1 : 0;
    if (state != kDisconnect)
        life.problem.clear();
    life.ends += state == kDisconnect ? 1 : 0;
    Kernel::Trace::note(Kernel::Trace::Kind::programState, appType, state);
    if (state == kDisconnect)
        heartbeatPending.erase(appType);
    // Under the lock, so that the changes are told in the order in which they happened.
    Kernel::postSystemMessage(Kernel::exeMonitorId, msgStateChanged, appType, state);
}

int ExeMonitor::getAppState(int appType) const
{
    const std::lock_guard guard(lock);
    const auto found = appStates.find(appType);
    return found == appStates.end() ? kDisconnect : found->second;
}

void ExeMonitor::addConnectListener(AppConnectStateInterface* listener)
{
    connectListeners.addIfNotAlreadyThere(listener);
}

void ExeMonitor::removeConnectListener(AppConnectStateInterface* listener)
{
    connectListeners.removeFirstMatchingValue(listener);
}

void ExeMonitor::onFilterMessage(const Platform::RemoteMessage& message)
{
    const int appType = message.appType; // As the bus names it; what the program says of itself does not count.
    if (message.arg1 != appType)
        logger().error(appText(appType) + " | calls itself " + juce::String(message.arg1));
    if (message.what == RMSG_APP_HELLO)
    {
        // A program may speak before its launch is recorded: kStarting comes first all the same.
        const std::lock_guard launching(launchLock);
        Kernel::postSystemMessage(Kernel::exeMonitorId, msgHello, appType, message.arg2);
    }
    else if (message.what == RMSG_HEARTBEAT_REPLY)
    {
        Kernel::postSystemMessage(Kernel::exeMonitorId, msgHeartbeatReply, appType, message.arg2);
    }
}

void ExeMonitor::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload)
{
    switch (id)
    {
    case Kernel::MSG_SYS_START:
        return handleStart();
    case Kernel::MSG_SYS_READY:
        return startTimer(heartbeatTimer, heartbeatPeriodMs);
    case Kernel::MSG_SYS_TIMER:
        return handleTimer(arg1);
    case msgHello:
        return handleHello(arg1);
    case msgHeartbeatReply:
        return handleHeartbeatReply(arg1);
    case msgStateChanged:
        return handleStateChange(arg1, arg2);
    case msgCommandLine:
        return sendCommandLine(arg1, Kernel::payloadAs<Platform::Bundle>(payload));
    default:
        return;
    }
}

void ExeMonitor::handleStart()
{
    addRemoteMsgFilter(RMSG_APP_HELLO, this);
    addRemoteMsgFilter(RMSG_HEARTBEAT_REPLY, this);
    broadcastRemoteMessage(RMSG_ENGINE_STARTED, 0, 0);
}

void ExeMonitor::handleTimer(int timerId)
{
    if (timerId == heartbeatTimer)
        runHeartbeatCycle();
    else if (timerId == closingTimer)
        endClosingApps();
}

void ExeMonitor::handleHello(int appType)
{
    auto process = monitor.getProcess(appType);
    if (process == nullptr || !process->isRunning())
    {
        const auto running = findRunningProgram(appType);
        if (!running.found) // Its process has ended since it spoke.
            return;
        process = running.process;
        monitor.watchProcess(appType, process);
    }
    acknowledgeHello(appType);
    const bool again = getAppState(appType) == kConnected;
    // Its end may have been told meanwhile: nobody would take this back.
    {
        const std::lock_guard guard(lock);
        if (monitor.getProcess(appType) == process)
            setAppState(appType, kConnected);
    }
    programSaidHello(appType, again);
}

void ExeMonitor::handleHeartbeatReply(int appType)
{
    namedSilent.erase(appType);
    const std::lock_guard guard(lock);
    heartbeatPending.erase(appType);
    lives[appType].lastHeartbeat = Platform::Clock::now();
}

std::map<int, ExeMonitor::Status> ExeMonitor::getStatus() const
{
    const std::lock_guard guard(lock);
    auto all = lives;
    for (auto& [appType, status] : all)
    {
        status.state = getAppState(appType);
        if (const auto process = monitor.getProcess(appType); process != nullptr && process->isRunning())
            status.process = process->getPid();
        status.isSilent = heartbeatPending.contains(appType) && status.state == kConnected;
    }
    return all;
}

void ExeMonitor::handleStateChange(int appType, int state)
{
    if (state == kDisconnect)
    {
        namedSilent.erase(appType);
        runQueuedLaunches(appType);
    }
    const auto listeners = connectListeners;
    for (auto* listener : listeners)
        listener->onAppConnectState(appType, state);
}

void ExeMonitor::handleProcessEnd(int appType)
{
    MessageHelper::expectProcess(appType, anyProcess);
    setAppState(appType, kDisconnect);
}

void ExeMonitor::runQueuedLaunches(int appType)
{
    // Held to the end, so that a launch that comes meanwhile does not overtake those that waited.
    const std::lock_guard launching(launchLock);
    if (launchQueue.empty())
        return;
    // Out of the queue first: a launch that has to wait again goes back into it.
    const auto due = std::stable_partition(launchQueue.begin(), launchQueue.end(),
                                           [=](const auto& request) { return request.appType != appType; });
    const std::vector<LaunchRequest> requests(due, launchQueue.end());
    launchQueue.erase(due, launchQueue.end());
    if (launchQueue.empty())
        stopTimer(closingTimer);
    for (const auto& request : requests)
        launch(request);
}

void ExeMonitor::runHeartbeatCycle()
{
    std::set<int> silentApps;
    {
        const std::lock_guard guard(lock);
        silentApps.swap(heartbeatPending);
        for (const auto& [appType, state] : appStates)
            if (state == kConnected)
                heartbeatPending.insert(appType);
    }
    judgeHeartbeat(silentApps);
    broadcastRemoteMessage(RMSG_HEARTBEAT, 0, 0);
}

void ExeMonitor::judgeHeartbeat(const std::set<int>& silentApps)
{
    if (silentApps.empty())
    {
        failedHeartbeats = 0;
        Platform::debugPrint("heat beat success\r\n");
        return;
    }
    for (const int appType : silentApps)
    {
        Platform::debugPrint("heat beat failure::%s\r\n", Pubhead::appTypeName(appType));
        if (namedSilent.insert(appType).second)
            logger().error(appText(appType) + " | does not answer the heartbeat");
    }
    ++failedHeartbeats;
    if (failedHeartbeats > toleratedFailedHeartbeats)
        Kernel::postSystemMessage(Kernel::deviceStatusManagerId, Kernel::MSG_HEARTBEAT_STOP, 0, 0);
}

void ExeMonitor::endClosingApps()
{
    const std::lock_guard launching(launchLock);
    std::set<int> awaited;
    for (const auto& request : launchQueue)
        awaited.insert(request.appType);
    for (const int appType : awaited)
        if (getAppState(appType) == kClosing)
            terminateApp(appType);
        else if (getAppState(appType) == kConnected && !isEnding(appType)) // It had left the channel only.
            runQueuedLaunches(appType);
    // One that has ended meanwhile is left to its change of state, which is on its way and runs the launches.
}

} // namespace Extend

namespace EngineApi
{

using Extend::ExeMonitor;

bool launchApp(int appType, int page, const juce::String& path, Platform::Bundle::Ptr bundle, bool background)
{
    return ExeMonitor::getInstance()->launchApp(appType, page, path, std::move(bundle), background);
}

bool showOrLaunchApp(int appType, int page, const juce::String& path, Platform::Bundle::Ptr bundle)
{
    return ExeMonitor::getInstance()->showOrLaunchApp(appType, page, path, std::move(bundle));
}

void terminateApp(int appType)
{
    ExeMonitor::getInstance()->terminateApp(appType);
}

void closeApp(int appType)
{
    ExeMonitor::getInstance()->closeApp(appType);
}

void setAppState(int appType, int state)
{
    ExeMonitor::getInstance()->setAppState(appType, state);
}

int getAppState(int appType)
{
    return ExeMonitor::getInstance()->getAppState(appType);
}

void addConnectListener(AppConnectStateInterface* listener)
{
    ExeMonitor::getInstance()->addConnectListener(listener);
}

void removeConnectListener(AppConnectStateInterface* listener)
{
    if (auto* exeMonitor = ExeMonitor::getExisting())
        exeMonitor->removeConnectListener(listener);
}

} // namespace EngineApi
