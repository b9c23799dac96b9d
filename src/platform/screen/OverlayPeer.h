#pragma once

#include "platform/screen/Overlay.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace Platform
{

/**
    Keeps the framework from opening a display itself: it would wait for one without limit, use ":0" where none is
    named, and end the process together with it. The engine's windows have their own peers instead. Message thread,
    before any component is made and while no other thread runs, as it changes the environment for a moment.
*/
void keepFrameworkOffDisplay();

/** Puts a component into a window of the engine's own. Message thread. */
class OverlayPeer : public juce::ComponentPeer, private juce::AsyncUpdater
{
public:
    /** For `createNewPeer`; there is a display to look for (`UIHelper::hasDisplay`). */
    OverlayPeer(juce::Component& shownComponent, int windowStyle);

    void* getNativeHandle() const override;
    void setVisible(bool shouldBeVisible) override;
    void setTitle(const juce::String& title) override;
    void setBounds(const juce::Rectangle<int>& newBounds, bool isNowFullScreen) override;
    juce::Rectangle<int> getBounds() const override { return bounds; }
    juce::Point<float> localToGlobal(juce::Point<float> point) override
    {
        return point + bounds.getPosition().toFloat();
    }
    juce::Point<float> globalToLocal(juce::Point<float> point) override
    {
        return point - bounds.getPosition().toFloat();
    }
    bool contains(juce::Point<int> point, bool trueIfInAChildWindow) const override;
    void toFront(bool takeKeyboardFocus) override;
    void repaint(const juce::Rectangle<int>& area) override;
    void performAnyPendingRepaintsNow() override { handleUpdateNowIfNeeded(); }

    // Such a window has no frame, no focus, and one size.
    void setMinimised(bool) override {}
    bool isMinimised() const override { return false; }
    void setFullScreen(bool) override {}
    bool isFullScreen() const override { return false; }
    void setIcon(const juce::Image&) override {}
    OptionalBorderSize getFrameSizeIfPresent() const override { return {}; }
    juce::BorderSize<int> getFrameSize() const override { return {}; }
    bool setAlwaysOnTop(bool) override { return true; }
    void toBehind(juce::ComponentPeer*) override {}
    bool isFocused() const override { return false; }
    void grabFocus() override {}
    void textInputRequired(juce::Point<int>, juce::TextInputTarget&) override {}
    void setAlpha(float) override {}
    juce::StringArray getAvailableRenderingEngines() override { return { "Software" }; }

private:
    using juce::ComponentPeer::globalToLocal;
    using juce::ComponentPeer::localToGlobal;

    void handleAsyncUpdate() override;
    void pointer(juce::Point<int> position, bool down);

    juce::Rectangle<int> bounds;
    bool visible = false;
    const std::unique_ptr<OverlayWindow> window;
};

} // namespace Platform
