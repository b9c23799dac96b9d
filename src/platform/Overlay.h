#pragma once

#include "platform/Window.h"

#include <functional>
#include <memory>

/** What windows that lie above the pages of other programs need from the display. Without a display there is nothing.
 */
namespace Platform
{

/** Sees every touch of the screen while it lives. No call of its handler runs after its destructor. */
class TouchWatch
{
public:
    virtual ~TouchWatch() = default;
};

/** The top-level window under the finger or pointer, noWindow for none. Called on the watch's thread. */
using TouchHandler = std::function<void(WindowHandle)>;

/**
    Watches the touches and button presses of the whole display; every program still gets its own. A thread "touches"
    receives them, as they come unasked. Null without a display, and on failure (logged).
*/
std::unique_ptr<TouchWatch> watchTouches(TouchHandler handler);

/**
    Cuts the corners off a window with a quarter circle of `radius` pixels; where a compositing manager blends the
   window, it stays whole. False without a display or such a window. Any thread.
*/
bool clipCorners(WindowHandle window, int width, int height, int radius);

/**
    Puts a window that no window manager looks after above all others, those of other programs too. False without a
   display or such a window. Any thread.
*/
bool raiseWindow(WindowHandle window);

} // namespace Platform
