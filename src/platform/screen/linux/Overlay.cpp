#include "platform/screen/Overlay.h"

#include "platform/base/Logger.h"
#include "platform/screen/linux/XDisplay.h"

#include <xcb/xinput.h>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/Overlay", "Overlay" };

/** The extension's first version that knows touches. */
constexpr std::uint16_t majorVersion = 2;
constexpr std::uint16_t minorVersion = 2;

/** Buttons of a wheel: turning it touches nothing. */
constexpr std::uint32_t firstWheelButton = 4;
constexpr std::uint32_t lastWheelButton = 7;

/** Raw events reach a watcher beside every grab and every other receiver. */
class TouchClient : public XClient
{
public:
    explicit TouchClient(TouchHandler touchHandler)
        : handler(std::move(touchHandler))
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
        if (!select(x) && !x.isLost())
            logger().error("the display does not report touches");
    }

    void handle(XConnection& x, const xcb_generic_event_t& event) override
    {
        if (!isTouch(event))
            return;
        const auto touched = windowUnderPointer(x);
        const std::lock_guard guard(lock);
        if (handler != nullptr)
            handler(touched);
    }

private:
    bool select(XConnection& x)
    {
        const auto* extension = xcb_get_extension_data(x.get(), &xcb_input_id);
        if (extension == nullptr || extension->present == 0)
            return false;
        opcode = extension->major_opcode;
        const XReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
            x.get(), xcb_input_xi_query_version(x.get(), majorVersion, minorVersion), nullptr));
        if (version == nullptr || version->major_version != majorVersion || version->minor_version < minorVersion)
            return false;
        const struct
        {
            xcb_input_event_mask_t head;
            std::uint32_t events;
        } mask { { XCB_INPUT_DEVICE_ALL_MASTER, 1 },
                 XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_BEGIN };
        return x.check(xcb_input_xi_select_events_checked(x.get(), x.getRoot(), 1, &mask.head));
    }

    bool isTouch(const xcb_generic_event_t& event) const
    {
        const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
        if (eventTypeOf(event) != XCB_GE_GENERIC || generic.extension != opcode)
            return false;
        if (generic.event_type == XCB_INPUT_RAW_TOUCH_BEGIN)
            return true;
        if (generic.event_type != XCB_INPUT_RAW_BUTTON_PRESS)
            return false;
        const auto button = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event).detail;
        return button < firstWheelButton || button > lastWheelButton;
    }

    /** A raw event has no place, but the finger has moved the pointer to it. */
    static WindowHandle windowUnderPointer(const XConnection& x)
    {
        const XReply<xcb_query_pointer_reply_t> pointer(
            xcb_query_pointer_reply(x.get(), xcb_query_pointer(x.get(), x.getRoot()), nullptr));
        return pointer == nullptr ? noWindow : pointer->child;
    }

    std::mutex lock;
    TouchHandler handler;
    std::uint8_t opcode = 0;
};

class XTouchWatch : public TouchWatch
{
public:
    XTouchWatch(std::shared_ptr<XDisplay> watched, TouchHandler handler)
        : display(std::move(watched))
        , client(std::make_shared<TouchClient>(std::move(handler)))
    {
        display->add(client);
    }
    ~XTouchWatch() override
    {
        client->close();
        display->remove(client);
    }

private:
    const std::shared_ptr<XDisplay> display;
    const std::shared_ptr<TouchClient> client;
};

} // namespace

std::unique_ptr<TouchWatch> watchTouches(TouchHandler handler)
{
    auto display = XDisplay::current();
    if (display == nullptr)
        return nullptr;
    return std::make_unique<XTouchWatch>(std::move(display), std::move(handler));
}

} // namespace Platform
