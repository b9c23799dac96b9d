#include "platform/screen/Window.h"

#include "platform/base/Utf8.h"
#include "platform/record/Recorder.h"
#include "platform/screen/linux/XDisplay.h"

#include <algorithm>
#include <array>

namespace Platform
{

namespace
{

constexpr int messageFormat = 32;
/** In 32-bit units; no window has a longer title. */
constexpr std::uint32_t longestTitle = 1024;

using Windows = std::vector<xcb_window_t>;

void append(Windows& windows, const Windows& more)
{
    for (const auto window : more)
        if (std::find(windows.begin(), windows.end(), window) == windows.end())
            windows.push_back(window);
}

/** Children of every parent; all requests go out before the first answer is awaited. */
Windows childrenOf(const XConnection& x, const Windows& parents)
{
    std::vector<xcb_query_tree_cookie_t> cookies;
    for (const auto parent : parents)
        cookies.push_back(xcb_query_tree(x.get(), parent));
    Windows children;
    for (const auto cookie : cookies)
        if (const XReply<xcb_query_tree_reply_t> reply { xcb_query_tree_reply(x.get(), cookie, nullptr) })
        {
            const auto* first = xcb_query_tree_children(reply.get());
            children.insert(children.end(), first, first + xcb_query_tree_children_length(reply.get()));
        }
    return children;
}

/** What a window manager manages and what lies directly on the root. */
Windows topLevelWindows(const XConnection& x)
{
    auto windows = x.getValues(x.getRoot(), x.getEwmh()->_NET_CLIENT_LIST, XCB_ATOM_WINDOW);
    append(windows, childrenOf(x, { x.getRoot() }));
    return windows;
}

/** A text property, by its own type; "" when there is none. */
juce::String textOf(const XConnection& x, const xcb_get_property_reply_t* reply)
{
    if (reply == nullptr || reply->format != 8)
        return {};
    const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply));
    const int length = xcb_get_property_value_length(reply);
    if (reply->type == x.getEwmh()->UTF8_STRING)
        return textOfUtf8({ bytes, static_cast<size_t>(length) });
    juce::String latin1;
    for (const char byte : std::string_view(bytes, static_cast<size_t>(length)))
        latin1 += static_cast<juce::juce_wchar>(static_cast<unsigned char>(byte));
    return latin1;
}

/** The first of the windows with the title, or noWindow. */
WindowHandle findTitled(const XConnection& x, const Windows& windows, const juce::String& title)
{
    struct Cookies
    {
        xcb_get_property_cookie_t modern;
        xcb_get_property_cookie_t old;
    };
    std::vector<Cookies> cookies;
    for (const auto window : windows)
        cookies.push_back(
            { xcb_get_property(x.get(), 0, window, x.getEwmh()->_NET_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0,
                               longestTitle),
              xcb_get_property(x.get(), 0, window, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0, longestTitle) });
    WindowHandle found = noWindow;
    for (size_t index = 0; index < windows.size(); ++index)
    {
        const auto& [modernCookie, oldCookie] = cookies[index];
        const XReply<xcb_get_property_reply_t> modern(xcb_get_property_reply(x.get(), modernCookie, nullptr));
        const XReply<xcb_get_property_reply_t> old(xcb_get_property_reply(x.get(), oldCookie, nullptr));
        auto text = textOf(x, modern.get());
        if (text.isEmpty())
            text = textOf(x, old.get());
        if (found == noWindow && text == title)
            found = windows[index];
    }
    return found;
}

xcb_void_cookie_t sendMessage(const XConnection& x, xcb_window_t window, std::array<std::uint32_t, 3> data)
{
    xcb_client_message_event_t event {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = messageFormat;
    event.window = window;
    event.type = x.getMessageType();
    std::copy(data.begin(), data.end(), event.data.data32);
    // Without an event mask it goes to the program that made the window.
    return xcb_send_event_checked(x.get(), 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
}

WindowHandle searchWindow(const juce::String& title)
{
    const auto x = XDisplay::connection();
    if (x == nullptr || title.isEmpty())
        return noWindow;
    // Hidden windows are in no manager's list, and without a manager there is no list: then the tree is searched. A
    // manager puts its frames between the root and the windows.
    auto candidates = topLevelWindows(*x);
    auto found = findTitled(*x, candidates, title);
    if (found == noWindow)
        found = findTitled(*x, childrenOf(*x, candidates), title);
    x->finish();
    return found;
}

bool isThere(WindowHandle window)
{
    const auto x = XDisplay::connection();
    if (x == nullptr || window == noWindow)
        return false;
    const XReply<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(x->get(), xcb_get_window_attributes(x->get(), window), nullptr));
    return x->finish() && reply != nullptr;
}

int processOf(WindowHandle window)
{
    const auto x = XDisplay::connection();
    if (x == nullptr || window == noWindow)
        return -1;
    auto* ewmh = x->getEwmh();
    std::uint32_t pid = 0;
    const bool known = xcb_ewmh_get_wm_pid_reply(ewmh, xcb_ewmh_get_wm_pid(ewmh, window), &pid, nullptr) != 0;
    return x->finish() && known ? static_cast<int>(pid) : -1;
}

bool send(WindowHandle window, std::int32_t message, std::int32_t wParam, std::int32_t lParam)
{
    const auto x = XDisplay::connection();
    if (x == nullptr || window == noWindow)
        return false;
    const std::array data { static_cast<std::uint32_t>(message), static_cast<std::uint32_t>(wParam),
                            static_cast<std::uint32_t>(lParam) };
    if (window != allWindows)
        return x->check(sendMessage(*x, window, data)) && x->finish();
    std::vector<xcb_void_cookie_t> cookies;
    for (const auto each : topLevelWindows(*x))
        cookies.push_back(sendMessage(*x, each, data));
    for (const auto cookie : cookies)
        x->check(cookie); // A window that went meanwhile needs no message.
    return x->finish();
}

void map(WindowHandle window, bool visible)
{
    const auto x = XDisplay::connection();
    if (x == nullptr || window == noWindow)
        return;
    x->check(visible ? xcb_map_window_checked(x->get(), window) : xcb_unmap_window_checked(x->get(), window));
    x->finish();
}

void raise(WindowHandle window)
{
    const auto x = XDisplay::connection();
    if (x == nullptr || window == noWindow)
        return;
    if (x->managerSupports(x->getEwmh()->_NET_ACTIVE_WINDOW))
        xcb_ewmh_request_change_active_window(x->getEwmh(), x->getScreenNumber(), window,
                                              XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER, XCB_CURRENT_TIME, XCB_NONE);
    else
    {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        x->check(xcb_configure_window_checked(x->get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above));
        x->check(xcb_map_window_checked(x->get(), window));
    }
    x->finish();
}

} // namespace

WindowHandle findWindow(const juce::String& title)
{
    return recorded(
        Step::findWindow, [&] { return searchWindow(title); }, title);
}

bool isWindow(WindowHandle window)
{
    return recorded(
        Step::isWindow, [=] { return isThere(window); }, window);
}

int windowProcess(WindowHandle window)
{
    return recorded(
        Step::windowProcess, [=] { return processOf(window); }, window);
}

bool postWindowMessage(WindowHandle window, std::int32_t message, std::int32_t wParam, std::int32_t lParam)
{
    return recorded(
        Step::postToWindow, [=] { return send(window, message, wParam, lParam); }, window, message, wParam, lParam);
}

void showWindow(WindowHandle window, bool visible)
{
    recordStep(Step::showWindow, window, visible, true);
    map(window, visible);
}

void setForegroundWindow(WindowHandle window)
{
    recordStep(Step::raiseWindow, window, true);
    raise(window);
}

} // namespace Platform
