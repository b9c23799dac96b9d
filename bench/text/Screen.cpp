#include "bench/text/Screen.h"

#include <chrono>
#include <cstdlib>
#include <juce_graphics/juce_graphics.h>
#include <memory>
#include <thread>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace Bench
{

namespace
{

struct Disconnect
{
    void operator()(xcb_connection_t* connection) const { ::xcb_disconnect(connection); }
};

using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

/** The display and the screen of it that the unit draws on; no screen without a display. */
struct Display
{
    explicit Display(const std::string& name)
    {
        if (name.empty())
            return;
        int number = 0;
        connection.reset(::xcb_connect(name.c_str(), &number));
        if (::xcb_connection_has_error(connection.get()) != 0)
            return;
        auto screens = ::xcb_setup_roots_iterator(::xcb_get_setup(connection.get()));
        for (; number > 0 && screens.rem > 1; --number)
            ::xcb_screen_next(&screens);
        screen = screens.data;
    }

    Connection connection;
    const xcb_screen_t* screen = nullptr;
};

constexpr const char* noDisplay = "there is no display";

struct Free
{
    void operator()(void* reply) const { std::free(reply); }
};

using Look = std::unique_ptr<xcb_get_image_reply_t, Free>;

Look look(xcb_connection_t* connection, const xcb_screen_t& screen)
{
    const auto request = ::xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, screen.root, 0, 0,
                                         screen.width_in_pixels, screen.height_in_pixels, ~0u);
    return Look(::xcb_get_image_reply(connection, request, nullptr));
}

bool isSame(const Look& first, const Look& second)
{
    const auto size = static_cast<std::size_t>(::xcb_get_image_data_length(first.get()));
    return std::equal(::xcb_get_image_data(first.get()), ::xcb_get_image_data(first.get()) + size,
                      ::xcb_get_image_data(second.get()));
}

/**
    Programs draw when they please: two looks are the same, or two seconds have passed. Null when there is no picture.
*/
Look lookAtRest(const Display& display)
{
    constexpr std::chrono::milliseconds pause { 150 };
    constexpr int mostLooks = 14;
    auto pixels = look(display.connection.get(), *display.screen);
    for (int i = 0; i < mostLooks && pixels != nullptr; ++i)
    {
        std::this_thread::sleep_for(pause);
        auto next = look(display.connection.get(), *display.screen);
        const bool atRest = next != nullptr && isSame(pixels, next);
        pixels = std::move(next);
        if (atRest)
            break;
    }
    return pixels;
}

/** The display's pixels are blue, green, red and a byte for nothing. */
juce::Image imageOf(const Look& pixels, const xcb_screen_t& screen)
{
    constexpr int bytesPerPixel = 4;
    juce::Image image(juce::Image::RGB, screen.width_in_pixels, screen.height_in_pixels, false);
    const juce::Image::BitmapData target(image, juce::Image::BitmapData::writeOnly);
    const auto* source = ::xcb_get_image_data(pixels.get());
    for (int y = 0; y < image.getHeight(); ++y)
        for (int x = 0; x < image.getWidth(); ++x, source += bytesPerPixel)
            target.setPixelColour(x, y, juce::Colour(source[2], source[1], source[0]));
    return image;
}

} // namespace

std::string savePicture(const std::string& displayName, const std::string& file)
{
    constexpr int colourDepth = 24;
    const Display display(displayName);
    if (display.screen == nullptr)
        return noDisplay;
    const auto pixels = lookAtRest(display);
    if (pixels == nullptr || pixels->depth != colourDepth)
        return "the display's picture cannot be had: 24 bits a pixel are wanted";
    const juce::File target(
        juce::File::getCurrentWorkingDirectory().getChildFile(juce::String::fromUTF8(file.c_str())));
    target.getParentDirectory().createDirectory();
    target.deleteFile();
    const auto stream = target.createOutputStream();
    if (stream == nullptr || !juce::PNGImageFormat().writeImageToStream(imageOf(pixels, *display.screen), *stream))
        return file + ": cannot be written";
    return {};
}

std::string touchScreen(const std::string& displayName, int x, int y)
{
    constexpr std::uint8_t firstButton = 1;
    constexpr std::chrono::milliseconds touchTime { 80 };
    const Display display(displayName);
    if (display.screen == nullptr)
        return noDisplay;
    auto* connection = display.connection.get();
    const auto* extension = ::xcb_get_extension_data(connection, &xcb_test_id);
    if (extension == nullptr || extension->present == 0)
        return "the display takes no touches from programs";
    lookAtRest(display); // as a person does before the finger comes
    const auto send = [&](std::uint8_t what, std::uint8_t detail)
    {
        ::xcb_test_fake_input(connection, what, detail, XCB_CURRENT_TIME, display.screen->root,
                              static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
        // An answer to whatever else says that the display has taken it.
        std::free(::xcb_get_input_focus_reply(connection, ::xcb_get_input_focus(connection), nullptr));
    };
    send(XCB_MOTION_NOTIFY, 0);
    send(XCB_BUTTON_PRESS, firstButton);
    std::this_thread::sleep_for(touchTime);
    send(XCB_BUTTON_RELEASE, firstButton);
    return {};
}

bool canBeOpened(const std::string& display)
{
    return Display(display).screen != nullptr;
}

bool isPageShown(const std::string& displayName)
{
    const Display display(displayName);
    if (display.screen == nullptr)
        return false;
    auto* connection = display.connection.get();
    const auto owned = [](auto* reply) { return std::unique_ptr<std::remove_pointer_t<decltype(reply)>, Free>(reply); };
    const auto tree =
        owned(::xcb_query_tree_reply(connection, ::xcb_query_tree(connection, display.screen->root), nullptr));
    if (tree == nullptr)
        return false;
    const auto* windows = ::xcb_query_tree_children(tree.get());
    return std::any_of(windows, windows + ::xcb_query_tree_children_length(tree.get()),
                       [&](xcb_window_t window)
                       {
                           // Either may be gone by now.
                           const auto state = owned(::xcb_get_window_attributes_reply(
                               connection, ::xcb_get_window_attributes(connection, window), nullptr));
                           const auto size = owned(
                               ::xcb_get_geometry_reply(connection, ::xcb_get_geometry(connection, window), nullptr));
                           return state != nullptr && state->map_state == XCB_MAP_STATE_VIEWABLE && size != nullptr &&
                                  2 * size->width > display.screen->width_in_pixels;
                       });
}

} // namespace Bench
