#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace Platform
{

/** Holds the layout of a window: fills the window that it is put into. Message thread. */
class CVXWindow : public juce::Component
{
public:
    CVXWindow();

    /** Takes the layout in place of an earlier one, at its top left corner, and its size; null leaves it empty. */
    void setLayout(std::unique_ptr<juce::Component> newLayout);
    juce::Component* getLayout() const { return layout.get(); }

    void showWindow(bool visible) { setVisible(visible); }
    /** Without a background what the layout does not draw is transparent; with it, black. */
    void enableNoDrawBkg(bool noBackground);

    void paint(juce::Graphics& graphics) override;

private:
    std::unique_ptr<juce::Component> layout;
};

} // namespace Platform
