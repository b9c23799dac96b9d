#include "platform/linux/XConnection.h"

#include "platform/Configuration.h"
#include "platform/Logger.h"

#include <algorithm>
#include <mutex>

namespace Platform
{

namespace
{

constexpr const char* source = "platform/XConnection";
constexpr const char* tag = "XConnection";
constexpr const char* messageTypeName = "_CORVANE_WINDOW_MESSAGE";

/** In 32-bit units; more than any window manager lists. */
constexpr std::uint32_t longestProperty = 65536;

/** The process's display and the connection for requests. Another display name, as between tests, starts afresh. */
struct Shared
{
    std::mutex lock;
    std::shared_ptr<XDisplayState> display;
    std::shared_ptr<XConnection> connection;

    static Shared& get()
    {
        static Shared instance;
        return instance;
    }
};

std::string displayName()
{
    const char* name = std::getenv("DISPLAY");
    return name != nullptr && Configuration::get().display == "auto" ? name : "";
}

} // namespace

std::shared_ptr<XConnection> XConnection::shared()
{
    auto& process = Shared::get();
    const std::lock_guard guard(process.lock);
    const auto name = displayName();
    if (process.display == nullptr || process.display->name != name)
    {
        process.display = std::make_shared<XDisplayState>();
        process.display->name = name;
        process.connection.reset(new XConnection(process.display));
        if (!process.connection->connect())
            process.connection.reset();
    }
    if (process.connection != nullptr && process.display->lost)
        process.connection.reset();
    return process.connection;
}

std::unique_ptr<XConnection> XConnection::open()
{
    const auto requests = shared();
    if (requests == nullptr)
        return nullptr;
    std::unique_ptr<XConnection> opened(new XConnection(requests->display));
    if (!opened->connect())
        return nullptr;
    return opened;
}

XConnection::XConnection(std::shared_ptr<XDisplayState> state)
    : display(std::move(state))
{
}

bool XConnection::connect()
{
    if (display->name.empty())
        return false;
    int screenNumber = 0;
    connection = xcb_connect(display->name.c_str(), &screenNumber);
    if (const int error = xcb_connection_has_error(connection); error != 0)
    {
        Logger::getInstance()->logError(source, __LINE__, tag, "no X display \"%s\" (error %d)", display->name.c_str(),
                                        error);
        return false;
    }
    const auto* setup = xcb_get_setup(connection);
    auto screens = xcb_setup_roots_iterator(setup);
    for (; screenNumber > 0 && screens.rem > 1; --screenNumber)
        xcb_screen_next(&screens);
    screen = screens.data;

    const auto typeCookie = xcb_intern_atom(
        connection, 0, static_cast<std::uint16_t>(std::char_traits<char>::length(messageTypeName)), messageTypeName);
    const bool known = xcb_ewmh_init_atoms_replies(&ewmh, xcb_ewmh_init_atoms(connection, &ewmh), nullptr) != 0;
    const XReply<xcb_intern_atom_reply_t> type(xcb_intern_atom_reply(connection, typeCookie, nullptr));
    if (!known || type == nullptr)
    {
        isLost();
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
        Logger::getInstance()->logError(source, __LINE__, tag, "lost the X display \"%s\"", display->name.c_str());
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
