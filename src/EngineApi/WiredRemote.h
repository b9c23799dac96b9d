#pragma once

#include <juce_core/juce_core.h>

namespace EngineApi
{

/**
    The two-line display of the wired remote. Any thread, also one that holds a lock: a call queues its commands and
    returns at once. The remote gets them later, in the order of the calls; a text that a newer one covers before it is
    sent is left out. True: the commands are queued. False: the call is refused, or the remote is not there. Reached
    through Provided<WiredRemote>.
*/
class WiredRemote
{
public:
    virtual ~WiredRemote() = default;
    /** Row 0 or 1 (any other wraps over both), column 0 to 31. A temporary text does not replace the stored line. */
    virtual bool showText(int row, int column, const juce::String& text, bool temporary) = 0;
    /** A text that covers the stored lines and is restored with them, until it is shown with an empty text. */
    virtual bool showLasting(int row, int column, const juce::String& text) = 0;
    virtual void clearRow(int row) = 0;
    virtual void clearDisplay(bool forgetStored) = 0;
    virtual void setDimmer(int level) = 0;           ///< 0 to 15
    virtual void restoreAfter(int milliseconds) = 0; ///< below 1 cancels
    virtual bool isRestorePending() = 0;
    virtual bool restore() = 0; ///< shows the stored lines and the lasting text only
};

} // namespace EngineApi
