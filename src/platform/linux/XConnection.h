#pragma once

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>

namespace Platform
{

/** A reply or event of xcb, which comes from malloc. */
struct XFree
{
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using XReply = std::unique_ptr<T, XFree>;

/** The display that the process uses: its name, and whether a connection to it broke. */
struct XDisplayState
{
    std::string name;
    std::atomic<bool> lost { false };
};

/** A connection to the display, with the atoms that windows need. Any thread, as xcb itself. */
class XConnection
{
public:
    /** A connection of the caller's own. Null when `unit.display` is "none", without a display or when it is lost. */
    static std::unique_ptr<XConnection> open();
    /** The one for requests, opened on the first use. Null as above. The answer stays valid while it is held. */
    static std::shared_ptr<XConnection> shared();

    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    xcb_connection_t* get() const { return connection; }
    xcb_window_t getRoot() const { return screen->root; }
    const xcb_ewmh_connection_t& getAtoms() const { return ewmh; }
    xcb_atom_t getMessageType() const { return messageType; }

    /** Sends what is queued and drops events that nobody waits for. False when the display is lost. */
    bool finish();
    /** Whether the connection has broken; logs it once for the display. */
    bool isLost();
    /** Whether the checked request was carried out. */
    bool check(xcb_void_cookie_t request);

    /** Values of a format-32 property; empty when the window has none. */
    std::vector<std::uint32_t> getValues(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const;
    /** Whether a window manager runs that supports the hint. */
    bool managerSupports(xcb_atom_t hint) const;

private:
    explicit XConnection(std::shared_ptr<XDisplayState> state);
    bool connect();

    std::shared_ptr<XDisplayState> display;
    xcb_connection_t* connection = nullptr;
    const xcb_screen_t* screen = nullptr;
    xcb_ewmh_connection_t ewmh {};
    xcb_atom_t messageType = XCB_ATOM_NONE;
};

} // namespace Platform
