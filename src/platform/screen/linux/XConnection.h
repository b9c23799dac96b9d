#pragma once

#include <atomic>
#include <cstdlib>
#include <juce_core/juce_core.h>
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

/** The highest bit says that another program sent it. */
inline int eventTypeOf(const xcb_generic_event_t& event)
{
    return event.response_type & 0x7f;
}

/** A display as long as it lives: its name, and whether a connection to it broke. */
struct XDisplayState
{
    explicit XDisplayState(std::string displayName)
        : name(std::move(displayName))
    {
    }

    const std::string name;
    std::atomic<bool> lost { false };
};

/** A connection to the display, with the atoms that windows need. Any thread, as xcb itself. */
class XConnection
{
public:
    /** Waits for the display without limit. Null when it cannot be opened, with the error of xcb. */
    static std::unique_ptr<XConnection> open(std::shared_ptr<XDisplayState> display, int& error);

    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    xcb_connection_t* get() const { return connection; }
    const xcb_screen_t& getScreen() const { return *screen; }
    int getScreenNumber() const { return screenNumber; }
    xcb_window_t getRoot() const { return screen->root; }
    /** The library takes it by pointer and only reads it. */
    xcb_ewmh_connection_t* getEwmh() const { return &ewmh; }
    xcb_atom_t getMessageType() const { return messageType; }

    /** Sends what is queued and drops events that nobody waits for. False when the display is lost. */
    bool finish();
    /** Whether the connection has broken; logs it once for the display. */
    bool isLost();
    /** Whether the checked request was carried out. */
    bool check(xcb_void_cookie_t request);

    /** Gives the window its name; not awaited. */
    void setTitle(xcb_window_t window, const juce::String& title) const;
    /** Values of a format-32 property; empty when the window has none. */
    std::vector<std::uint32_t> getValues(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const;
    /** Whether a window manager runs that supports the hint. */
    bool managerSupports(xcb_atom_t hint) const;

private:
    explicit XConnection(std::shared_ptr<XDisplayState> state);
    bool connect(int& error);

    std::shared_ptr<XDisplayState> display;
    xcb_connection_t* connection = nullptr;
    int screenNumber = 0;
    const xcb_screen_t* screen = nullptr;
    mutable xcb_ewmh_connection_t ewmh {};
    xcb_atom_t messageType = XCB_ATOM_NONE;
};

} // namespace Platform
