#pragma once

#include "platform/base/Time.h"
#include "platform/base/WakeUp.h"
#include "platform/screen/linux/XConnection.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace Platform
{

/** Something of the engine that is on the display whenever there is one. All its calls are on the display's thread. */
class XClient
{
public:
    virtual ~XClient() = default;
    /** A display has come, and nothing of the client is on it yet. */
    virtual void appear(XConnection& x) = 0;
    /** After `XDisplay::wake`, and after `due` has come: does what has been asked for meanwhile. */
    virtual void update(XConnection&) {}
    /** Every event of the connection comes here. */
    virtual void handle(XConnection& x, const xcb_generic_event_t& event) = 0;
    /** Takes everything of the client off the display; the client has been removed. */
    virtual void leave(XConnection&) {}
    /** When it wants to be updated without being woken. */
    virtual std::optional<Clock::time_point> due() const { return std::nullopt; }
};

/**
    The display that the process uses. Its thread "display" alone waits for the display: it connects, keeps the clients
    on it, and connects anew when the display is lost, or comes later. So nobody else is held up by a display that
    cannot be had; a request on the connection of `requests` waits for its answer on its caller's thread. Any thread.
*/
class XDisplay
{
public:
    /**
        The one that DISPLAY names, on its way from the first call on. Null with `unit.display` "none" or without a
        name; no other display is ever opened.
    */
    static std::shared_ptr<XDisplay> current();
    /** Its connection for requests (`requests`). Null without a display. The answer stays valid while it is held. */
    static std::shared_ptr<XConnection> connection();

    explicit XDisplay(const std::string& name);
    ~XDisplay();
    XDisplay(const XDisplay&) = delete;
    XDisplay& operator=(const XDisplay&) = delete;

    /**
        The connection for requests, null while there is no display. The first look at the display is awaited, for two
        seconds at most. The answer stays valid while it is held.
    */
    std::shared_ptr<XConnection> requests();

    void add(std::shared_ptr<XClient> client);
    /** The client's calls may go on for a moment. */
    void remove(const std::shared_ptr<XClient>& client);
    /** The clients have something to do. */
    void wake();

private:
    struct State;

    const std::shared_ptr<State> state; ///< of the thread, too, which may hang in the display when this object goes
    std::thread thread;
};

} // namespace Platform
