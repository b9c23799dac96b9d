#include "platform/screen/Window.h"

#include "doubles/WindowDouble.h"
#include "platform/config/Configuration.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace Platform
{

namespace
{

using doubles::WindowDouble;

struct KnownWindow
{
    juce::String title;
    int pid;
};

/** What a reset forgets. */
struct Desktop
{
    std::map<WindowHandle, KnownWindow> windows;
    std::vector<WindowDouble::Posted> posted;
    std::vector<WindowDouble::Action> actions;
};

std::mutex lock;
Desktop desktop;
WindowHandle lastHandle = 0x400000; // Never used twice: a closed window's handle stays invalid.

} // namespace

WindowHandle findWindow(const juce::String& title)
{
    const std::lock_guard guard(lock);
    const auto found = std::find_if(desktop.windows.begin(), desktop.windows.end(),
                                    [&title](const auto& entry) { return entry.second.title == title; });
    return found == desktop.windows.end() ? noWindow : found->first;
}

bool isWindow(WindowHandle window)
{
    const std::lock_guard guard(lock);
    return desktop.windows.contains(window);
}

int windowProcess(WindowHandle window)
{
    const std::lock_guard guard(lock);
    const auto found = desktop.windows.find(window);
    return found == desktop.windows.end() ? -1 : found->second.pid;
}

bool postWindowMessage(WindowHandle window, std::int32_t message, std::int32_t wParam, std::int32_t lParam)
{
    const std::lock_guard guard(lock);
    if (window != allWindows && !desktop.windows.contains(window))
        return false;
    desktop.posted.push_back({ window, message, wParam, lParam });
    return true;
}

void showWindow(WindowHandle window, bool visible)
{
    const std::lock_guard guard(lock);
    desktop.actions.push_back({ window, visible ? WindowDouble::Operation::show : WindowDouble::Operation::hide });
}

void setForegroundWindow(WindowHandle window)
{
    const std::lock_guard guard(lock);
    desktop.actions.push_back({ window, WindowDouble::Operation::foreground });
}

void startWindowMessages(const juce::String&, WindowMessageHandler) {}

void stopWindowMessages() {}

bool UIHelper::hasDisplay()
{
    return false;
}

namespace doubles
{

void WindowDouble::reset()
{
    const std::lock_guard guard(lock);
    desktop = {};
}

WindowHandle WindowDouble::add(const juce::String& title, int pid)
{
    const std::lock_guard guard(lock);
    desktop.windows[++lastHandle] = { title, pid };
    return lastHandle;
}

void WindowDouble::remove(WindowHandle window)
{
    const std::lock_guard guard(lock);
    desktop.windows.erase(window);
}

std::vector<WindowDouble::Posted> WindowDouble::takePosted()
{
    const std::lock_guard guard(lock);
    return std::exchange(desktop.posted, {});
}

std::vector<WindowDouble::Action> WindowDouble::takeActions()
{
    const std::lock_guard guard(lock);
    return std::exchange(desktop.actions, {});
}

} // namespace doubles

} // namespace Platform
