#include "support/ScratchUnit.h"

#include <gtest/gtest.h>
#include <juce_events/juce_events.h>

namespace
{

/** A test sees the display, the bus and the sound of its own making, never the desktop's of whoever runs it. */
void leaveDesktop()
{
    // Without a name the toolkit would try the machine's first display.
    setenv("DISPLAY", "none", 1);
    for (const auto* name : { "WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR" })
        unsetenv(name);
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    leaveDesktop();
    const ScratchUnit unit;
    // The message manager of the whole run: timers can be started, and this is the message thread.
    const juce::ScopedJuceInitialiser_GUI messageManager;
    return RUN_ALL_TESTS();
}
