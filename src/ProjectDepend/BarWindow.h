#pragma once

#include "kernel/SystemMessage.h"
#include "platform/screen/CVXWindow.h"
#include "platform/screen/FloatViewInterface.h"
#include "platform/screen/Layout.h"
#include "platform/screen/OverlayCallback.h"
#include "platform/screen/OverlayPeer.h"

#include <atomic>

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
    std::atomic<bool> shown { false };
};

/** Brings a message to a bar on the message thread, unless the bar has been deleted meanwhile. */
template <typename BarType>
class BarCallbackMessage : public juce::CallbackMessage
{
public:
    BarCallbackMessage(const juce::Component::SafePointer<BarType>& receiver, juce::int32 messageId, juce::int32 first,
                       juce::int32 second, Kernel::Payload content)
        : bar(receiver)
        , id(messageId)
        , arg1(first)
        , arg2(second)
        , payload(std::move(content))
    {
    }

    /** False on the message thread, where the bar handles the message itself; on any other thread it is posted. */
    static bool passOn(const juce::Component::SafePointer<BarType>& receiver, juce::int32 messageId, juce::int32 first,
                       juce::int32 second, const Kernel::Payload& content)
    {
        if (juce::MessageManager::existsAndIsCurrentThread())
            return false;
        // Refused only while the message loop ends, when nothing is to be seen any more.
        (new BarCallbackMessage(receiver, messageId, first, second, content))->post();
        return true;
    }

    void messageCallback() override
    {
        if (bar != nullptr)
            bar->postMessage(id, arg1, arg2, payload);
    }

private:
    const juce::Component::SafePointer<BarType> bar;
    const juce::int32 id;
    const juce::int32 arg1;
    const juce::int32 arg2;
    const Kernel::Payload payload;
};

} // namespace Bar
