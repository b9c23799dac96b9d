#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace Platform
{

/** Told on the message thread when the screen is touched outside a window that is seen. */
class OverlayCallback
{
public:
    virtual ~OverlayCallback() = default;
    virtual void touchedOutside() = 0;
};

/**
    Registers the one callback of a window; null removes it, which must happen before either is deleted. Message thread.
*/
void setOverlayCallback(juce::Component& window, OverlayCallback* callback);

} // namespace Platform
