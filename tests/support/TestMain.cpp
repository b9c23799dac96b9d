#include "support/ScratchUnit.h"

#include <gtest/gtest.h>
#include <juce_events/juce_events.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const ScratchUnit unit;
    // The message manager of the whole run: timers can be started, and this is the message thread.
    const juce::ScopedJuceInitialiser_GUI messageManager;
    return RUN_ALL_TESTS();
}
