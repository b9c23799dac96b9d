#include "platform/screen/linux/XConnection.h"

#include "platform/base/Logger.h"

#include <algorithm>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/XConnection", "XConnection" };
constexpr const char* messageTypeName = "_CORVANE_WINDOW_MESSAGE";

/** In 32-bit units; more than any window manager lists. */
constexpr std::uint32_t longestProperty = 65536;

} // namespace

std::unique_ptr<XConnection> XConnection::open(std::shared_ptr<XDisplayState> display, int& error)
{
    std::unique_ptr<XConnection> opened(new XConnection(std::move(display)));
    if (!opened->connect(error))
        return nullptr;
    return opened;
}

XConnection::XConnection(std::shared_ptr<XDisplayState> state)
    : display(std::move(state))
{
}

bool XConnection::connect(int& error)
{
    connection = xcb_connect(display->name.c_str(), &screenNumber);
    error = xcb_connection_has_error(connection);
    if (error != 0)
        return false;
    const auto* setup = xcb_get_setup(connection);
    auto screens = xcb_setup_roots_iterator(setup);
    for (int left = screenNumber; left > 0 && screens.rem > 1; --left)
        xcb_screen_next(&screens);
    screen = screens.data;

    const auto typeCookie = xcb_intern_atom(
        connection, 0, static_cast<std::uint16_t>(std::char_traits<char>::length(messageTypeName)), messageTypeName);
    const bool known = xcb_ewmh_init_atoms_replies(&ewmh, xcb_ewmh_init_atoms(connection, &ewmh), nullptr) != 0;
    const XReply<xcb_intern_atom_reply_t> type(xcb_intern_atom_reply(connection, typeCookie, nullptr));
    if (!known || type == nullptr)
    {
        error = xcb_connection_has_error(connection);
        return false;
    }
    messageType = type->atom;
    return true;
}

XConnection::~XConnection()
{
    xcb_ewmh_connection_wipe(&ewmh);
    if (connection != nullptr)
        xcb_disconnect(connection);
}

bool XConnection::isLost()
{
    if (xcb_connection_has_error(connection) == 0)
        return display->lost;
    if (!display->lost.exchange(true))
        logger().error("lost the X display \"%s\"", display->name.c_str());
    return true;
}

bool XConnection::finish()
{
    xcb_flush(connection);
    while (const XReply<xcb_generic_event_t> event { xcb_poll_for_event(connection) })
    {
    }
    return !isLost();
}

bool XConnection::check(xcb_void_cookie_t request)
{
    const XReply<xcb_generic_error_t> error(xcb_request_check(connection, request));
    return error == nullptr && !isLost();
}

void XConnection::setTitle(xcb_window_t window, const juce::String& title) const
{
    const auto length = static_cast<std::uint32_t>(title.getNumBytesAsUTF8());
    for (const auto property : { ewmh._NET_WM_NAME, static_cast<xcb_atom_t>(XCB_ATOM_WM_NAME) })
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, ewmh.UTF8_STRING, 8, length,
                            title.toRawUTF8());
}

std::vector<std::uint32_t> XConnection::getValues(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const
{
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, property, type, 0, longestProperty), nullptr));
    if (reply == nullptr || reply->format != 32)
        return {};
    const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return { values, values + static_cast<size_t>(xcb_get_property_value_length(reply.get())) / sizeof(*values) };
}

bool XConnection::managerSupports(xcb_atom_t hint) const
{
    // The root keeps the hints of a manager that has gone: a living one has a window that names itself.
    const auto managers = getValues(getRoot(), ewmh._NET_SUPPORTING_WM_CHECK, XCB_ATOM_WINDOW);
    if (managers.empty() || getValues(managers.front(), ewmh._NET_SUPPORTING_WM_CHECK, XCB_ATOM_WINDOW) != managers)
        return false;
    const auto hints = getValues(getRoot(), ewmh._NET_SUPPORTED, XCB_ATOM_ATOM);
    return std::find(hints.begin(), hints.end(), hint) != hints.end();
}

} // namespace Platform
