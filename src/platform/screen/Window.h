#pragma once

#include <cstdint>
#include <functional>
#include <juce_core/juce_core.h>

/**
    Native windows and window messages between programs. Without a display nothing is found and posts fail. The display
    is looked for from the first use on, and again after it is lost, which is logged; the first use waits for it two
    seconds at most. Any thread.

    A message is an X11 client message of type `_CORVANE_WINDOW_MESSAGE`, format 32: message, wParam, lParam.
*/
namespace Platform
{

using WindowHandle = std::uint32_t;
inline constexpr WindowHandle noWindow = 0;
/** Receiver of a message that goes to every top-level window. */
inline constexpr WindowHandle allWindows = 0xffff;

/** The top-level window with exactly this title, shown or hidden, or noWindow. */
WindowHandle findWindow(const juce::String& title);
bool isWindow(WindowHandle window);
/** Process of a window, -1 when it is unknown. */
int windowProcess(WindowHandle window);
/** False when there is no such window or no display. */
bool postWindowMessage(WindowHandle window, std::int32_t message, std::int32_t wParam, std::int32_t lParam);
void showWindow(WindowHandle window, bool visible);
void setForegroundWindow(WindowHandle window);

/** Message, wParam, lParam; called on the display's thread. */
using WindowMessageHandler = std::function<void(std::int32_t, std::int32_t, std::int32_t)>;

/**
    Opens the window titled `title` that other programs post to, instead of one that is open, on the display, as soon as
    there is one. It is never seen; one that somebody destroys is made again.
*/
void startWindowMessages(const juce::String& title, WindowMessageHandler handler);
/** No handler call runs after it returns. Not to be called from the handler. */
void stopWindowMessages();

} // namespace Platform
