#include "platform/gui/CVXTextElement.h"

namespace Platform
{

namespace
{

constexpr const char* typeface = "DejaVu Sans"; // bundled
constexpr float narrowest = 0.7f;               // of the letters' width

} // namespace

void CVXTextElement::setTextColour(CVXButtonState state, juce::Colour colour)
{
    colours[static_cast<std::size_t>(state)] = colour;
}

void CVXTextElement::paint(juce::Graphics& graphics, juce::Rectangle<int> area, CVXButtonState state) const
{
    graphics.setColour(colours[static_cast<std::size_t>(state)]);
    graphics.setFont(juce::Font(typeface, fontSize, bold ? juce::Font::bold : juce::Font::plain));
    graphics.drawFittedText(text, ownArea.isEmpty() ? area : ownArea, justification, 1, narrowest);
}

} // namespace Platform
