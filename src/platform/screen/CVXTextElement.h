#pragma once

#include <array>
#include <juce_gui_basics/juce_gui_basics.h>

namespace Platform
{

/** How a button looks just now; contents give their colours by these numbers. */
enum class CVXButtonState : int { pressed = 1, disabled = 3, normal = 5 };

/**
    A line of text as the content of a control, with a colour for each state. Long text is narrowed, then shortened;
    line breaks in it are drawn as blanks.
*/
class CVXTextElement
{
public:
    void setText(const juce::String& newText) { text = newText; }
    const juce::String& getText() const { return text; }
    void setFontSize(float size) { fontSize = size; }
    void setBold(bool isBold) { bold = isBold; }
    void setJustification(juce::Justification newJustification) { justification = newJustification; }
    void setTextColour(CVXButtonState state, juce::Colour colour);
    /** The same in every state. */
    void setTextColour(juce::Colour colour) { colours.fill(colour); }
    /** Its place in its control; an empty area, as at first, is the whole control. */
    void setArea(juce::Rectangle<int> newArea) { ownArea = newArea; }

    void paint(juce::Graphics& graphics, juce::Rectangle<int> area, CVXButtonState state) const;

private:
    juce::String text;
    float fontSize = 15.0f;
    bool bold = false;
    juce::Justification justification = juce::Justification::centred;
    juce::Rectangle<int> ownArea;
    std::array<juce::Colour, 6> colours {};
};

} // namespace Platform
