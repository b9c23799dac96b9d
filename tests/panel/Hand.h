#pragma once

#include <cstdlib>
#include <juce_graphics/juce_graphics.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

/** Mouse and keys of the display that DISPLAY names, moved as a person's hand would move them. */
class Hand
{
public:
    Hand()
        : connection(xcb_connect(nullptr, nullptr))
        , setup(xcb_get_setup(connection))
        , root(xcb_setup_roots_iterator(setup).data->root)
    {
    }
    ~Hand() { xcb_disconnect(connection); }
    Hand(const Hand&) = delete;
    Hand& operator=(const Hand&) = delete;

    enum Button : std::uint8_t { left = 1, right = 3, wheelUp = 4, wheelDown = 5 };

    void moveTo(juce::Point<int> at) const { send(XCB_MOTION_NOTIFY, 0, at); }
    void click(juce::Point<int> at, Button button = left) const
    {
        moveTo(at);
        press(button);
        release(button);
    }
    void press(Button button) const { send(XCB_BUTTON_PRESS, button); }
    void release(Button button) const { send(XCB_BUTTON_RELEASE, button); }
    /** By the symbol on it: XK_F1 is 0xffbe. */
    void type(std::uint32_t symbol) const
    {
        for (const auto what : { XCB_KEY_PRESS, XCB_KEY_RELEASE })
            send(static_cast<std::uint8_t>(what), keyOf(symbol));
    }

private:
    xcb_connection_t* connection;
    const xcb_setup_t* setup;
    xcb_window_t root;

    void send(std::uint8_t what, std::uint8_t detail, juce::Point<int> at = {}) const
    {
        xcb_test_fake_input(connection, what, detail, XCB_CURRENT_TIME, root, static_cast<std::int16_t>(at.x),
                            static_cast<std::int16_t>(at.y), 0);
        xcb_flush(connection);
    }

    std::uint8_t keyOf(std::uint32_t symbol) const
    {
        const auto first = setup->min_keycode;
        const auto count = static_cast<std::uint8_t>(setup->max_keycode - first + 1);
        auto* reply =
            xcb_get_keyboard_mapping_reply(connection, xcb_get_keyboard_mapping(connection, first, count), nullptr);
        const auto* symbols = xcb_get_keyboard_mapping_keysyms(reply);
        std::uint8_t key = 0;
        for (int i = 0; i < count && key == 0; ++i)
            if (symbols[i * reply->keysyms_per_keycode] == symbol)
                key = static_cast<std::uint8_t>(first + i);
        std::free(reply);
        return key;
    }
};
