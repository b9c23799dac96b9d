#include "platform/screen/CVXTextElement.h"

namespace Platform
{

namespace
{

constexpr const char* typeface = "DejaVu Sans"; // bundled
constexpr float narrowest = 0.7f;               // of the letters' width
constexpr int mostLetters = 200;                // more than a control is wide

/** What of a text can be seen. The framework draws one with line breaks as it stands, beyond its area. */
juce::String lineOf(const juce::String& text)
{
    return text.substring(0, mostLetters).replaceCharacters("\r\n", "  ");
}

} // namespace

void CVXTextElement::setTextColour(CVXButtonState state, juce::Colour colour)
{
    colours[static_cast<std::size_t>(state)] = colour;
}

void CVXTextElement::paint(juce::Graphics& graphics, juce::Rectangle<int> area, CVXButtonState state) const
{
    graphics.setColour(colours[static_cast<std::size_t>(state)]);
    graphics.setFont(juce::Font(typeface, fontSize, bold ? juce::Font::bold : juce::Font::plain));
    graphics.drawFittedText(lineOf(text), ownArea.isEmpty() ? area : ownArea, justification, 1, narrowest);
}

} // namespace Platform
