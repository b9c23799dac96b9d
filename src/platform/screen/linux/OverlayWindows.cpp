#include "platform/base/Logger.h"
#include "platform/screen/Overlay.h"
#include "platform/screen/linux/XDisplay.h"
#include "platform/screen/linux/XPicture.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <xcb/shape.h>

namespace Platform
{

namespace
{

using namespace std::chrono_literals;

constexpr Log logger { "platform/OverlayWindows", "OverlayWindows" };

constexpr std::uint8_t firstButton = 1;
/**
    How often the bars are put above a window that covers them: at once this often, and then once in a pause, so that a
    window that keeps raising itself gets no quick answers.
*/
constexpr double mostRestores = 8;
constexpr auto restorePause = 500ms;

bool isComposited(const XConnection& x)
{
    // There is one screen on the unit.
    auto* atoms = x.getEwmh();
    xcb_window_t owner = XCB_NONE;
    return xcb_ewmh_get_wm_cm_owner_reply(atoms, xcb_ewmh_get_wm_cm_owner(atoms, 0), &owner, nullptr) != 0 &&
           owner != XCB_NONE;
}

/** One window: what it is to be, which any thread may say, and what it is on the display. */
class XWindow
{
public:
    explicit XWindow(OverlayWindow::PointerHandler pointerHandler)
        : handler(std::move(pointerHandler))
    {
    }

    struct Wanted
    {
        juce::String title;
        bool visible = false;
        std::uint64_t place = 0; ///< the larger, the higher
        juce::Image picture;
        juce::Point<int> position;
        bool redraw = false; ///< the picture is new
    };

    template <typename Change>
    void change(Change&& make)
    {
        const std::lock_guard guard(lock);
        make(wanted);
    }

    /** No call of the handler runs afterwards. */
    void close()
    {
        const std::lock_guard guard(handlerLock);
        handler = nullptr;
    }

    /** Nothing of it is on the display. */
    void forget()
    {
        handle = noWindow;
        shown = drawn = false;
    }

    /** Makes the window what it is to be; true when it is to be put in its place among the others. */
    bool update(XConnection& x)
    {
        Wanted now;
        {
            const std::lock_guard guard(lock);
            now = wanted;
            wanted.redraw = wanted.redraw && !wanted.visible;
        }
        if (!now.visible || !now.picture.isValid())
        {
            hide(x);
            return false;
        }
        const bool appears = !std::exchange(shown, true);
        if (appears)
            open(x, now);
        if (!isShown())
            return false;
        if (now.redraw || !drawn)
            draw(x, now.picture);
        if (const auto target = now.picture.getBounds() + now.position; target != bounds)
            move(x, target);
        return std::exchange(place, now.place) != now.place || appears;
    }

    /** Above every other window, and seen. */
    void raise(XConnection& x) const
    {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(x.get(), handle, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_map_window(x.get(), handle);
    }

    void destroy(XConnection& x)
    {
        if (handle != noWindow)
            xcb_destroy_window(x.get(), handle);
        forget();
    }

    void press(const xcb_button_press_event_t& event, bool down)
    {
        const std::lock_guard guard(handlerLock);
        if (handler != nullptr && event.detail == firstButton)
            handler({ event.event_x, event.event_y }, down);
    }

    WindowHandle getHandle() const { return handle; }
    bool isShown() const { return shown && handle != noWindow; }
    std::uint64_t getPlace() const { return place; }

private:
    void hide(XConnection& x)
    {
        if (std::exchange(shown, false) && handle != noWindow)
            xcb_unmap_window(x.get(), handle);
    }

    /** A compositing manager may have come or gone since the window was made. */
    void open(XConnection& x, const Wanted& now)
    {
        const bool blended = isComposited(x);
        if (handle != noWindow && format.blended == blended)
            return;
        destroy(x);
        shown = true;
        if (const auto found = XPixelFormat::find(x, blended))
        {
            format = *found;
            create(x, now);
        }
        else
            logger().error("%s cannot be drawn with the colours of the display", now.title.toRawUTF8());
    }

    void create(XConnection& x, const Wanted& now)
    {
        auto* connection = x.get();
        const auto colours = xcb_generate_id(connection);
        xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colours, x.getRoot(), format.visual);
        xcb_create_window_value_list_t values {};
        values.override_redirect = 1; // A window manager leaves it alone.
        values.event_mask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;
        values.colormap = colours;
        const auto window = xcb_generate_id(connection);
        bounds = now.picture.getBounds() + now.position;
        xcb_create_window_aux(
            connection, format.depth, window, x.getRoot(), static_cast<std::int16_t>(bounds.getX()),
            static_cast<std::int16_t>(bounds.getY()), static_cast<std::uint16_t>(bounds.getWidth()),
            static_cast<std::uint16_t>(bounds.getHeight()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, format.visual,
            XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, &values);
        xcb_free_colormap(connection, colours);
        x.setTitle(window, now.title);
        handle = window;
    }

    /** The picture becomes the window's background: the display shows it anew without being told. */
    void draw(XConnection& x, const juce::Image& picture)
    {
        drawn = true;
        auto* connection = x.get();
        const auto width = static_cast<std::uint16_t>(picture.getWidth());
        const auto height = static_cast<std::uint16_t>(picture.getHeight());
        const auto pixmap = xcb_generate_id(connection);
        const auto context = xcb_generate_id(connection);
        xcb_create_pixmap(connection, format.depth, pixmap, handle, width, height);
        xcb_create_gc(connection, context, pixmap, 0, nullptr);
        const auto pixels = pixelsOf(picture, format);
        const auto stride = static_cast<std::uint32_t>(pixels.size() / height);
        // A request has a longest length, in units of four bytes.
        const auto linesAtOnce = (xcb_get_maximum_request_length(connection) - 8) * 4 / stride;
        for (std::uint32_t line = 0; line < height; line += linesAtOnce)
        {
            const auto lines = std::min(linesAtOnce, height - line);
            xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width,
                          static_cast<std::uint16_t>(lines), 0, static_cast<std::int16_t>(line), 0, format.depth,
                          lines * stride, pixels.data() + line * stride);
        }
        xcb_change_window_attributes(connection, handle, XCB_CW_BACK_PIXMAP, &pixmap);
        shape(x, outlineOf(picture));
        xcb_clear_area(connection, 0, handle, 0, 0, 0, 0);
        xcb_free_gc(connection, context);
        xcb_free_pixmap(connection, pixmap);
    }

    void shape(XConnection& x, const std::vector<xcb_rectangle_t>& outline) const
    {
        const auto* extension = xcb_get_extension_data(x.get(), &xcb_shape_id);
        if (extension == nullptr || extension->present == 0)
            return;
        const auto cut = [&](xcb_shape_sk_t kindOfShape)
        {
            xcb_shape_rectangles(x.get(), XCB_SHAPE_SO_SET, kindOfShape, XCB_CLIP_ORDERING_YX_BANDED, handle, 0, 0,
                                 static_cast<std::uint32_t>(outline.size()), outline.data());
        };
        if (!format.blended)
            cut(XCB_SHAPE_SK_BOUNDING);
        cut(XCB_SHAPE_SK_INPUT);
    }

    void move(XConnection& x, juce::Rectangle<int> target)
    {
        const std::array values { static_cast<std::uint32_t>(target.getX()), static_cast<std::uint32_t>(target.getY()),
                                  static_cast<std::uint32_t>(target.getWidth()),
                                  static_cast<std::uint32_t>(target.getHeight()) };
        xcb_configure_window(x.get(), handle,
                             XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                 XCB_CONFIG_WINDOW_HEIGHT,
                             values.data());
        bounds = target;
    }

    std::mutex lock;
    Wanted wanted;
    std::mutex handlerLock;
    OverlayWindow::PointerHandler handler;

    std::atomic<WindowHandle> handle { noWindow };
    // The display's thread alone.
    XPixelFormat format {};
    juce::Rectangle<int> bounds;
    std::uint64_t place = 0;
    bool shown = false; ///< or would be, if the display could show it
    bool drawn = false;
};

/** All windows of the engine, and the one place that keeps them above the windows of other programs. */
class OverlayWindows : public XClient
{
public:
    void add(std::shared_ptr<XWindow> window)
    {
        const std::lock_guard guard(lock);
        windows.push_back(std::move(window));
    }

    void remove(const std::shared_ptr<XWindow>& window)
    {
        const std::lock_guard guard(lock);
        std::erase(windows, window);
        removed.push_back(window);
    }

    void appear(XConnection& x) override
    {
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(x.get(), x.getRoot(), XCB_CW_EVENT_MASK, &events);
        {
            const std::lock_guard guard(lock);
            removed.clear();
        }
        for (const auto& each : all())
            each->forget();
    }

    void update(XConnection& x) override
    {
        Windows gone;
        {
            const std::lock_guard guard(lock);
            gone.swap(removed);
        }
        for (const auto& each : gone)
            each->destroy(x);
        bool changed = false;
        Windows shown;
        for (const auto& each : all())
        {
            changed = each->update(x) || changed;
            if (each->isShown())
                shown.push_back(each);
        }
        std::sort(shown.begin(), shown.end(),
                  [](const auto& first, const auto& second) { return first->getPlace() < second->getPlace(); });
        if (changed || mustRestore(x, shown))
        {
            disturbed = false;
            for (const auto& each : shown)
                each->raise(x);
        }
    }

    void handle(XConnection&, const xcb_generic_event_t& event) override
    {
        switch (eventTypeOf(event))
        {
        case XCB_MAP_NOTIFY:
            noticeOther(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
            break;
        case XCB_CONFIGURE_NOTIFY:
            noticeOther(reinterpret_cast<const xcb_configure_notify_event_t&>(event).window);
            break;
        case XCB_REPARENT_NOTIFY:
            noticeOther(reinterpret_cast<const xcb_reparent_notify_event_t&>(event).window);
            break;
        case XCB_CIRCULATE_NOTIFY:
            noticeOther(reinterpret_cast<const xcb_circulate_notify_event_t&>(event).window);
            break;
        case XCB_DESTROY_NOTIFY:
            if (const auto own = find(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window))
                own->forget();
            break;
        case XCB_BUTTON_PRESS:
        case XCB_BUTTON_RELEASE:
        {
            const auto& press = reinterpret_cast<const xcb_button_press_event_t&>(event);
            if (const auto own = find(press.event))
                own->press(press, eventTypeOf(event) == XCB_BUTTON_PRESS);
            break;
        }
        default:
            break;
        }
    }

    std::optional<Clock::time_point> due() const override { return retryAt; }

private:
    using Windows = std::vector<std::shared_ptr<XWindow>>;

    Windows all()
    {
        const std::lock_guard guard(lock);
        return windows;
    }

    std::shared_ptr<XWindow> find(xcb_window_t handle)
    {
        for (const auto& each : all())
            if (each->getHandle() == handle)
                return each;
        return nullptr;
    }

    void noticeOther(xcb_window_t window) { disturbed = disturbed || find(window) == nullptr; }

    bool mustRestore(XConnection& x, const Windows& shown)
    {
        if (retryAt.has_value() && Clock::now() < *retryAt)
            return false;
        retryAt.reset();
        if (!disturbed || shown.empty())
            return false;
        disturbed = !areHighest(x, shown);
        return disturbed && mayRestore();
    }

    static bool areHighest(XConnection& x, const Windows& shown)
    {
        const XReply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(x.get(), xcb_query_tree(x.get(), x.getRoot()), nullptr));
        if (tree == nullptr)
            return true;
        const auto* children = xcb_query_tree_children(tree.get());
        const auto count = static_cast<std::size_t>(xcb_query_tree_children_length(tree.get()));
        return count >= shown.size() &&
               std::equal(shown.begin(), shown.end(), children + (count - shown.size()),
                          [](const auto& window, auto child) { return window->getHandle() == child; });
    }

    bool mayRestore()
    {
        const auto now = Clock::now();
        const std::chrono::duration<double> passed = now - lastRestore;
        restores = std::min(mostRestores, restores + passed / restorePause);
        lastRestore = now;
        const bool may = restores >= 1;
        if (may)
            restores -= 1;
        else if (!std::exchange(contested, true))
            logger().error("another window keeps coming above those of the unit");
        contested = contested && restores < mostRestores - 1;
        retryAt = may ? std::nullopt : std::optional(now + restorePause);
        return may;
    }

    std::mutex lock;
    Windows windows;
    Windows removed; ///< still on the display

    // The display's thread alone.
    bool disturbed = false; ///< another window may have come to lie above
    double restores = mostRestores;
    Clock::time_point lastRestore;
    std::optional<Clock::time_point> retryAt;
    bool contested = false;
};

/** The windows of a display; its client from the first one on. */
std::shared_ptr<OverlayWindows> windowsOf(const std::shared_ptr<XDisplay>& display)
{
    static std::mutex lock;
    static std::weak_ptr<XDisplay> last;
    static std::weak_ptr<OverlayWindows> windows;
    const std::lock_guard guard(lock);
    if (last.lock() != display)
    {
        const auto first = std::make_shared<OverlayWindows>();
        display->add(first);
        last = display;
        windows = first;
    }
    return windows.lock();
}

class XOverlayWindow : public OverlayWindow
{
public:
    XOverlayWindow(std::shared_ptr<XDisplay> itsDisplay, PointerHandler handler)
        : display(std::move(itsDisplay))
        , windows(windowsOf(display))
        , window(std::make_shared<XWindow>(std::move(handler)))
    {
        windows->add(window);
    }
    ~XOverlayWindow() override
    {
        window->close();
        windows->remove(window);
        display->wake();
    }

    void setTitle(const juce::String& title) override
    {
        change([&](auto& wanted) { wanted.title = title; });
    }
    void setVisible(bool visible) override
    {
        change([&](auto& wanted) { wanted.visible = visible; });
    }
    void toFront() override
    {
        static std::atomic<std::uint64_t> highest { 0 };
        change([](auto& wanted) { wanted.place = ++highest; });
    }
    void setPicture(const juce::Image& picture, juce::Point<int> position) override
    {
        change(
            [&](auto& wanted)
            {
                wanted.picture = picture;
                wanted.position = position;
                wanted.redraw = true;
            });
    }
    WindowHandle getHandle() const override { return window->getHandle(); }

private:
    template <typename Change>
    void change(Change&& make)
    {
        window->change(std::forward<Change>(make));
        display->wake();
    }

    const std::shared_ptr<XDisplay> display;
    const std::shared_ptr<OverlayWindows> windows;
    const std::shared_ptr<XWindow> window;
};

} // namespace

std::unique_ptr<OverlayWindow> makeOverlayWindow(OverlayWindow::PointerHandler handler)
{
    auto display = XDisplay::current();
    if (display == nullptr)
        return nullptr;
    return std::make_unique<XOverlayWindow>(std::move(display), std::move(handler));
}

int getDisplayWidth()
{
    const auto x = XDisplay::connection();
    return x == nullptr ? 0 : x->getScreen().width_in_pixels;
}

} // namespace Platform
