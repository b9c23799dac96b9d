#include "platform/Overlay.h"

#include "platform/Logger.h"
#include "platform/Threads.h"
#include "platform/linux/WakeUp.h"
#include "platform/linux/XConnection.h"

#include <array>
#include <cmath>
#include <poll.h>
#include <thread>
#include <xcb/shape.h>
#include <xcb/xinput.h>

namespace Platform
{

namespace
{

constexpr const char* source = "platform/Overlay";
constexpr const char* tag = "Overlay";

/** The extension's first version that knows touches. */
constexpr std::uint16_t majorVersion = 2;
constexpr std::uint16_t minorVersion = 2;

/** Buttons of a wheel: turning it touches nothing. */
constexpr std::uint32_t firstWheelButton = 4;
constexpr std::uint32_t lastWheelButton = 7;

/** Raw events reach a watcher beside every grab and every other receiver. */
class XTouchWatch : public TouchWatch
{
public:
    XTouchWatch(std::unique_ptr<XConnection> connection, TouchHandler touchHandler)
        : x(std::move(connection))
        , handler(std::move(touchHandler))
    {
    }

    ~XTouchWatch() override
    {
        if (!thread.joinable())
            return;
        stopping.set();
        thread.join();
    }

    bool open()
    {
        const auto* extension = xcb_get_extension_data(x->get(), &xcb_input_id);
        if (extension == nullptr || extension->present == 0)
            return false;
        opcode = extension->major_opcode;
        const XReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
            x->get(), xcb_input_xi_query_version(x->get(), majorVersion, minorVersion), nullptr));
        if (version == nullptr || version->major_version != majorVersion || version->minor_version < minorVersion)
            return false;
        const struct
        {
            xcb_input_event_mask_t head;
            std::uint32_t events;
        } mask { { XCB_INPUT_DEVICE_ALL_MASTER, 1 },
                 XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_BEGIN };
        if (!x->check(xcb_input_xi_select_events_checked(x->get(), x->getRoot(), 1, &mask.head)))
            return false;
        thread = std::thread([this] { run(); });
        return true;
    }

private:
    void run()
    {
        enterThread("touches");
        std::array<pollfd, 2> waiting { { { stopping.getDescriptor(), POLLIN, 0 },
                                          { xcb_get_file_descriptor(x->get()), POLLIN, 0 } } };
        do
        {
            while (const XReply<xcb_generic_event_t> event { xcb_poll_for_event(x->get()) })
                if (isTouch(*event))
                    handler(windowUnderPointer());
            if (x->isLost())
                return;
            poll(waiting.data(), waiting.size(), -1);
        } while (waiting[0].revents == 0);
    }

    bool isTouch(const xcb_generic_event_t& event) const
    {
        const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
        if ((event.response_type & 0x7f) != XCB_GE_GENERIC || generic.extension != opcode)
            return false;
        if (generic.event_type == XCB_INPUT_RAW_TOUCH_BEGIN)
            return true;
        if (generic.event_type != XCB_INPUT_RAW_BUTTON_PRESS)
            return false;
        const auto button = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event).detail;
        return button < firstWheelButton || button > lastWheelButton;
    }

    /** A raw event has no place, but the finger has moved the pointer to it. */
    WindowHandle windowUnderPointer() const
    {
        const XReply<xcb_query_pointer_reply_t> pointer(
            xcb_query_pointer_reply(x->get(), xcb_query_pointer(x->get(), x->getRoot()), nullptr));
        return pointer == nullptr ? noWindow : pointer->child;
    }

    std::unique_ptr<XConnection> x;
    TouchHandler handler;
    std::uint8_t opcode = 0;
    WakeUp stopping;
    std::thread thread;
};

bool isComposited(const XConnection& x)
{
    // There is one screen on the unit.
    const auto selection = xcb_ewmh_get_wm_cm_owner(const_cast<xcb_ewmh_connection_t*>(&x.getAtoms()), 0);
    xcb_window_t owner = XCB_NONE;
    return xcb_ewmh_get_wm_cm_owner_reply(const_cast<xcb_ewmh_connection_t*>(&x.getAtoms()), selection, &owner,
                                          nullptr) != 0 &&
           owner != XCB_NONE;
}

/** The rows of a rectangle with round corners: one for each line of the corners, and one for what lies between. */
std::vector<xcb_rectangle_t> roundRectangle(int width, int height, int radius)
{
    std::vector<xcb_rectangle_t> rows;
    const auto add = [&rows, width](int y, int inset, int rowHeight)
    {
        rows.push_back({ static_cast<std::int16_t>(inset), static_cast<std::int16_t>(y),
                         static_cast<std::uint16_t>(width - 2 * inset), static_cast<std::uint16_t>(rowHeight) });
    };
    for (int line = 0; line < radius; ++line)
    {
        const double fromCentre = radius - line - 0.5;
        const int inset = static_cast<int>(std::lround(radius - std::sqrt(radius * radius - fromCentre * fromCentre)));
        add(line, inset, 1);
        add(height - 1 - line, inset, 1);
    }
    add(radius, 0, height - 2 * radius);
    return rows;
}

} // namespace

std::unique_ptr<TouchWatch> watchTouches(TouchHandler handler)
{
    auto connection = XConnection::open();
    if (connection == nullptr)
        return nullptr;
    auto watch = std::make_unique<XTouchWatch>(std::move(connection), std::move(handler));
    if (!watch->open())
    {
        Logger::getInstance()->logError(source, __LINE__, tag, "the display does not report touches");
        return nullptr;
    }
    return watch;
}

bool clipCorners(WindowHandle window, int width, int height, int radius)
{
    const auto x = XConnection::shared();
    const bool fits = radius >= 0 && 2 * radius <= std::min(width, height) && std::max(width, height) <= INT16_MAX;
    if (x == nullptr || window == noWindow || !fits)
        return false;
    const auto* extension = xcb_get_extension_data(x->get(), &xcb_shape_id);
    if (extension == nullptr || extension->present == 0)
        return false;
    if (isComposited(*x))
        return x->check(xcb_shape_mask_checked(x->get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, window, 0, 0,
                                               XCB_PIXMAP_NONE)) &&
               x->finish();
    const auto rows = roundRectangle(width, height, radius);
    return x->check(xcb_shape_rectangles_checked(x->get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                                                 XCB_CLIP_ORDERING_UNSORTED, window, 0, 0,
                                                 static_cast<std::uint32_t>(rows.size()), rows.data())) &&
           x->finish();
}

bool raiseWindow(WindowHandle window)
{
    const auto x = XConnection::shared();
    if (x == nullptr || window == noWindow)
        return false;
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    return x->check(xcb_configure_window_checked(x->get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above)) &&
           x->finish();
}

} // namespace Platform
