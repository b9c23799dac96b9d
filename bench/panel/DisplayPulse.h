#pragma once

#include <juce_gui_basics/juce_gui_basics.h>
#include <memory>

struct xcb_connection_t;

namespace BenchPanel
{

/**
    The toolkit may read a click into its queue while it waits for an answer of the display, and then sleeps on a
    connection where nothing is left to read: the click would lie there until the next event. And what it has drawn it
    hands over only when it reads events. So the window is sent one that means nothing. Message thread.
*/
class DisplayPulse
{
public:
    /** `window` is on the desktop, and outlives this. Nothing happens without an X display. */
    explicit DisplayPulse(const juce::Component& window);

    /** After each picture, and ten times a second at least. */
    void beat();

private:
    std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection;
    std::uint32_t type = 0; ///< an atom; 0 without a display
    const std::uint32_t handle;
};

} // namespace BenchPanel
