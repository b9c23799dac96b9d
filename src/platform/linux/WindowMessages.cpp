#include "platform/Logger.h"
#include "platform/Threads.h"
#include "platform/Window.h"
#include "platform/linux/WakeUp.h"
#include "platform/linux/XConnection.h"

#include <array>
#include <mutex>
#include <poll.h>
#include <thread>

namespace Platform
{

namespace
{

constexpr const char* source = "platform/WindowMessages";
constexpr const char* tag = "WindowMessages";

constexpr int messageFormat = 32;

/**
    A window that receives messages, with a connection and a thread of its own: while another thread awaits a reply, xcb
    may read this one's events from the descriptor that it polls.
*/
class MessageWindow
{
public:
    MessageWindow(std::unique_ptr<XConnection> connection, WindowMessageHandler messageHandler)
        : x(std::move(connection))
        , handler(std::move(messageHandler))
    {
    }

    ~MessageWindow()
    {
        if (!thread.joinable())
            return;
        stopping.set();
        thread.join();
    }

    /** The window is known to the display when it returns true. */
    bool open(const juce::String& title)
    {
        auto* connection = x->get();
        const auto& atoms = x->getAtoms();
        window = xcb_generate_id(connection);
        // A window manager leaves it alone.
        const std::uint32_t overrideRedirect = 1;
        const auto made = xcb_create_window_checked(connection, XCB_COPY_FROM_PARENT, window, x->getRoot(), 0, 0, 1, 1,
                                                    0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                                                    XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
        const auto length = static_cast<std::uint32_t>(title.getNumBytesAsUTF8());
        for (const auto property : { atoms._NET_WM_NAME, static_cast<xcb_atom_t>(XCB_ATOM_WM_NAME) })
            xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, atoms.UTF8_STRING, 8, length,
                                title.toRawUTF8());
        const auto pid = static_cast<std::uint32_t>(getpid());
        const auto owned = xcb_change_property_checked(connection, XCB_PROP_MODE_REPLACE, window, atoms._NET_WM_PID,
                                                       XCB_ATOM_CARDINAL, 32, 1, &pid);
        if (!x->check(made) || !x->check(owned))
            return false;
        thread = std::thread([this] { run(); });
        return true;
    }

private:
    void run()
    {
        enterThread("windows");
        std::array<pollfd, 2> waiting { { { stopping.getDescriptor(), POLLIN, 0 },
                                          { xcb_get_file_descriptor(x->get()), POLLIN, 0 } } };
        do
        {
            while (const XReply<xcb_generic_event_t> event { xcb_poll_for_event(x->get()) })
                deliver(*event);
            if (x->isLost())
                return;
            poll(waiting.data(), waiting.size(), -1);
        } while (waiting[0].revents == 0);
    }

    void deliver(const xcb_generic_event_t& event)
    {
        // The highest bit says that another program sent it.
        if ((event.response_type & 0x7f) != XCB_CLIENT_MESSAGE)
            return;
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
        if (message.window != window || message.type != x->getMessageType() || message.format != messageFormat)
            return;
        const auto word = [&message](size_t index) { return static_cast<std::int32_t>(message.data.data32[index]); };
        handler(word(0), word(1), word(2));
    }

    std::unique_ptr<XConnection> x;
    WindowMessageHandler handler;
    xcb_window_t window = XCB_NONE;
    WakeUp stopping;
    std::thread thread;
};

std::mutex lock;
std::unique_ptr<MessageWindow> open;

} // namespace

bool startWindowMessages(const juce::String& title, WindowMessageHandler handler)
{
    stopWindowMessages();
    auto connection = XConnection::open();
    if (connection == nullptr)
        return false;
    auto started = std::make_unique<MessageWindow>(std::move(connection), std::move(handler));
    if (!started->open(title))
    {
        Logger::getInstance()->logError(source, __LINE__, tag, "cannot open the window " + title);
        return false;
    }
    const std::lock_guard guard(lock);
    open = std::move(started);
    return true;
}

void stopWindowMessages()
{
    const std::lock_guard guard(lock);
    open.reset();
}

} // namespace Platform
