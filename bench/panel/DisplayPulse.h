#pragma once

#include <juce_gui_basics/juce_gui_basics.h>
#include <memory>

struct xcb_connection_t;

namespace BenchPanel
{

/**
    The toolkit may read a click into its queue while it waits for an answer of the display, and then sleeps on a
    connection where nothing is left to read: the click would lie there until the next event. So the window is sent an
    event that means nothing, ten times a second. Message thread.
*/
class DisplayPulse : private juce::Timer
{
public:
    /** `window` is on the desktop, and outlives this. Nothing happens without an X display. */
    explicit DisplayPulse(const juce::Component& window);

private:
    std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection;
    std::uint32_t type = 0; ///< an atom
    const std::uint32_t handle;

    void timerCallback() override;
};

} // namespace BenchPanel
