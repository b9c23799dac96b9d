#pragma once

#include "platform/screen/Window.h"

#include <functional>
#include <juce_graphics/juce_graphics.h>
#include <memory>

/**
    What the engine's own windows, which lie above the pages of other programs, need from the display. No call waits for
    it: windows appear as soon as there is a display, and again when another one has come.
*/
namespace Platform
{

/** Sees every touch of the screen while it lives. No call of its handler runs after its destructor. */
class TouchWatch
{
public:
    virtual ~TouchWatch() = default;
};

/** The top-level window under the finger or pointer, noWindow for none. Called on the display's thread. */
using TouchHandler = std::function<void(WindowHandle)>;

/**
    Watches the touches and button presses of the whole display; every program still gets its own. Null when no display
    is configured.
*/
std::unique_ptr<TouchWatch> watchTouches(TouchHandler handler);

/**
    A window of the engine's own, which no window manager looks after. While it is shown it is above the windows of
    other programs, also of those that open or are raised later; of several, the one that was brought to the front last
    is the highest. Where nothing is drawn, it is not there: what lies below is seen and touched. Any thread.
*/
class OverlayWindow
{
public:
    /**
        A press or release of the first button on the window. Called on the display's thread, not after the destructor.
    */
    using PointerHandler = std::function<void(juce::Point<int>, bool down)>;

    virtual ~OverlayWindow() = default;

    virtual void setTitle(const juce::String& title) = 0;
    virtual void setVisible(bool visible) = 0;
    virtual void toFront() = 0;
    /** What the window shows, and where on the screen; the ARGB image is not to be drawn into any more. */
    virtual void setPicture(const juce::Image& picture, juce::Point<int> position) = 0;
    /** noWindow while it is not on a display. */
    virtual WindowHandle getHandle() const = 0;
};

/** Hidden at first. Null when no display is configured. */
std::unique_ptr<OverlayWindow> makeOverlayWindow(OverlayWindow::PointerHandler handler);

/** Width of the display in pixels, 0 while there is none. */
int getDisplayWidth();

} // namespace Platform
