// Programs: their processes, their messages and their windows, as they were.
#include "bench/replay/Follower.h"
#include "platform/channel/Ipc.h"
#include "platform/config/Configuration.h"
#include "platform/screen/Overlay.h"
#include "platform/screen/Window.h"

#include <algorithm>

namespace Platform
{

using Replay::Follower;

namespace
{

constexpr auto no = [] { return false; };
constexpr auto zero = [] { return 0; };

class FollowedProcess : public Process
{
public:
    explicit FollowedProcess(int number)
        : pid(number)
    {
    }
    int getPid() const override { return pid; }
    bool isRunning() const override { return recorded(Step::isRunning, no, pid); }
    void terminate() override { recordStep(Step::kill, pid, true); }
    int getExitCode() const override { return -1; }

private:
    const int pid;
};

} // namespace

ProcessHandle createProcess(const juce::String& path, const juce::StringArray& arguments, ProgramKind)
{
    const int pid = recorded(Step::launch, zero, path, arguments.joinIntoString("\n"));
    return pid > 0 ? std::make_shared<FollowedProcess>(pid) : nullptr;
}

ProcessHandle openProcess(int pid)
{
    return recorded(Step::findProcess, no, pid) ? std::make_shared<FollowedProcess>(pid) : nullptr;
}

bool isSameOrDescendant(int pid, int ancestor)
{
    return pid == ancestor; // whose name on the bus it has was settled in the recording
}

struct ProcessWaiter::Backend
{
};

ProcessWaiter::ProcessWaiter() = default;
ProcessWaiter::~ProcessWaiter() = default;

int ProcessWaiter::wait(const std::vector<ProcessHandle>& processes)
{
    const int answer = recorded(Step::processEnd, zero);
    if (answer == woken || answer == failed)
        return answer;
    const auto found = std::ranges::find_if(processes, [=](const auto& each) { return each->getPid() == answer; });
    if (found == processes.end())
    {
        Follower::get().differ("nobody waits for process " + std::to_string(answer));
        return woken;
    }
    return static_cast<int>(found - processes.begin());
}

void ProcessWaiter::wake() {}

MsgSession::~MsgSession()
{
    close();
}

bool MsgSession::init(IMsgProc* receiver)
{
    Follower::get().reached.receiver = receiver;
    open = true;
    return true;
}

void MsgSession::close()
{
    if (std::exchange(open, false))
        Follower::get().reached.receiver = nullptr;
}

namespace IPCMsg
{

void MessageHelper::config(int, const char* (*)(int)) {}

bool MessageHelper::postMessage(int appType, const RemoteMessage::Ptr& message)
{
    return message != nullptr &&
           recorded(Step::post, no, appType, message->what, message->arg1, message->arg2, message->bundle);
}

bool MessageHelper::broadcastMessage(const RemoteMessage::Ptr& message)
{
    return message != nullptr &&
           recorded(Step::postToAll, no, message->what, message->arg1, message->arg2, message->bundle);
}

bool MessageHelper::sendBroadcast(const juce::String& action, const Bundle::Ptr& bundle)
{
    return recorded(Step::postNamed, no, action, bundle);
}

bool MessageHelper::isPresent(int appType)
{
    return recorded(Step::isPresent, no, appType);
}

int MessageHelper::ownerProcess(int appType)
{
    return recorded(Step::ownerOf, zero, appType);
}

void MessageHelper::expectProcess(int, int) {}

} // namespace IPCMsg

WindowHandle findWindow(const juce::String& title)
{
    return recorded(
        Step::findWindow, [] { return noWindow; }, title);
}

bool isWindow(WindowHandle window)
{
    return recorded(Step::isWindow, no, window);
}

int windowProcess(WindowHandle window)
{
    return recorded(Step::windowProcess, zero, window);
}

bool postWindowMessage(WindowHandle window, std::int32_t message, std::int32_t wParam, std::int32_t lParam)
{
    return recorded(Step::postToWindow, no, window, message, wParam, lParam);
}

void showWindow(WindowHandle window, bool visible)
{
    recordStep(Step::showWindow, window, visible, true);
}

void setForegroundWindow(WindowHandle window)
{
    recordStep(Step::raiseWindow, window, true);
}

void startWindowMessages(const juce::String&, WindowMessageHandler) {}

void stopWindowMessages() {}

bool UIHelper::hasDisplay()
{
    return false;
}

namespace
{

struct FollowedTouches : TouchWatch
{
    ~FollowedTouches() override { Follower::get().reached.touched = {}; }
};

/** Nobody sees it. */
class FollowedWindow : public OverlayWindow
{
public:
    explicit FollowedWindow(PointerHandler pointerHandler)
        : handler(std::move(pointerHandler))
    {
    }
    ~FollowedWindow() override { Follower::get().reached.windows.erase(title); }

    void setTitle(const juce::String& newTitle) override
    {
        auto& windows = Follower::get().reached.windows;
        windows.erase(title);
        title = newTitle.toStdString();
        windows[title] = handler;
    }
    void setVisible(bool) override {}
    void toFront() override {}
    void setPicture(const juce::Image&, juce::Point<int>) override {}
    WindowHandle getHandle() const override { return noWindow; }

private:
    const PointerHandler handler;
    std::string title;
};

} // namespace

std::unique_ptr<TouchWatch> watchTouches(TouchHandler handler)
{
    Follower::get().reached.touched = std::move(handler);
    return std::make_unique<FollowedTouches>();
}

std::unique_ptr<OverlayWindow> makeOverlayWindow(OverlayWindow::PointerHandler handler)
{
    return std::make_unique<FollowedWindow>(std::move(handler));
}

int getDisplayWidth()
{
    return 0;
}

} // namespace Platform
