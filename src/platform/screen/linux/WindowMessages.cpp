#include "platform/screen/Window.h"
#include "platform/screen/linux/XDisplay.h"

#include <mutex>
#include <unistd.h>

namespace Platform
{

namespace
{

constexpr int messageFormat = 32;

/** The window that receives messages; made anew when somebody destroys it. */
class MessageWindow : public XClient
{
public:
    MessageWindow(juce::String windowTitle, WindowMessageHandler messageHandler)
        : title(std::move(windowTitle))
        , handler(std::move(messageHandler))
    {
    }

    /** No call of the handler runs afterwards. */
    void close()
    {
        const std::lock_guard guard(lock);
        handler = nullptr;
    }

    void appear(XConnection& x) override
    {
        auto* connection = x.get();
        window = xcb_generate_id(connection);
        xcb_create_window_value_list_t values {};
        values.override_redirect = 1; // A window manager leaves it alone.
        values.event_mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_create_window_aux(connection, XCB_COPY_FROM_PARENT, window, x.getRoot(), 0, 0, 1, 1, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                              XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, &values);
        xcb_ewmh_set_wm_pid(x.getEwmh(), window, static_cast<std::uint32_t>(getpid()));
        // Whoever finds it by its title finds it whole.
        x.setTitle(window, title);
    }

    void handle(XConnection& x, const xcb_generic_event_t& event) override
    {
        const auto type = eventTypeOf(event);
        if (type == XCB_CLIENT_MESSAGE)
            deliver(x, reinterpret_cast<const xcb_client_message_event_t&>(event));
        else if (type == XCB_DESTROY_NOTIFY &&
                 reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == window)
            appear(x);
    }

    void leave(XConnection& x) override { xcb_destroy_window(x.get(), window); }

private:
    void deliver(const XConnection& x, const xcb_client_message_event_t& message)
    {
        if (message.window != window || message.type != x.getMessageType() || message.format != messageFormat)
            return;
        const auto word = [&message](size_t index) { return static_cast<std::int32_t>(message.data.data32[index]); };
        const std::lock_guard guard(lock);
        if (handler != nullptr)
            handler(word(0), word(1), word(2));
    }

    const juce::String title;
    std::mutex lock;
    WindowMessageHandler handler;
    xcb_window_t window = XCB_NONE; ///< the display's thread alone
};

std::mutex lock;
std::shared_ptr<XDisplay> display;
std::shared_ptr<MessageWindow> open;

} // namespace

void startWindowMessages(const juce::String& title, WindowMessageHandler handler)
{
    stopWindowMessages();
    const std::lock_guard guard(lock);
    display = XDisplay::current();
    if (display == nullptr)
        return;
    open = std::make_shared<MessageWindow>(title, std::move(handler));
    display->add(open);
}

void stopWindowMessages()
{
    const std::lock_guard guard(lock);
    if (display == nullptr)
        return;
    open->close();
    display->remove(open);
    open.reset();
    display.reset();
}

} // namespace Platform
