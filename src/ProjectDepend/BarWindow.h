#pragma once

#include "kernel/SystemMessage.h"
#include "platform/base/Shared.h"
#include "platform/base/Threads.h"
#include "platform/screen/CVXWindow.h"
#include "platform/screen/FloatViewInterface.h"
#include "platform/screen/Layout.h"
#include "platform/screen/OverlayCallback.h"
#include "platform/screen/OverlayPeer.h"

namespace Bar
{

/**
    What the bars have in common: a window above the pages with a layout of the resource packs, which hides when the
    screen is touched beside it. Without a display, or without its layout, it keeps its state and draws nothing. Message
    thread, but for `isBarShown`.
*/
class BarWindow : public juce::TopLevelWindow, public Platform::FloatViewInterface, public Platform::OverlayCallback
{
public:
    BarWindow(const juce::String& name, const juce::String& layoutFile);
    ~BarWindow() override;

    /** Any thread. */
    bool isBarShown() const { return shown; }

    void show(int parameter) override;
    void hide() override;
    void touchedOutside() override { hide(); }

protected:
    /** Null, and reported, when the layout has no such control. */
    template <typename Control>
    Control* findControl(const juce::String& name) const
    {
        return Platform::CVXRelationHelper::findComponent<Control>(window.getLayout(), name);
    }
    /** Nothing happens for a control that the layout lacks. */
    static void setVisibleIf(juce::Component* control, bool visible);
    /** Fits the window to the visible controls of the layout. To be called when others become visible. */
    void fitControls();

private:
    int getDesktopWindowStyleFlags() const override;
    juce::ComponentPeer* createNewPeer(int style, void* parent) override;
    void setShown(bool nowShown);

    Platform::CVXWindow window;
    juce::Point<int> place; ///< of the layout on the screen
    Platform::Shared<bool> shown { false };
};

/**
    False on the message thread, where the bar handles the message itself; from any other thread it is brought there,
    unless the bar is deleted meanwhile.
*/
template <typename BarType>
bool passOn(const juce::Component::SafePointer<BarType>& bar, juce::int32 id, juce::int32 arg1, juce::int32 arg2,
            const Kernel::Payload& payload)
{
    if (Platform::isMessageThread())
        return false;
    Platform::callOnMessageThread(
        [=]
        {
            if (bar != nullptr)
                bar->postMessage(id, arg1, arg2, payload);
        });
    return true;
}

} // namespace Bar
