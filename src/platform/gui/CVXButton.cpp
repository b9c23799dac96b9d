#include "platform/gui/CVXButton.h"

namespace Platform
{

void CVXTextElement::setTextColour(CVXButtonState state, juce::Colour colour)
{
    colours[static_cast<std::size_t>(state)] = colour;
}

void CVXTextElement::paint(juce::Graphics& graphics, juce::Rectangle<int> area, CVXButtonState state) const
{
    graphics.setColour(colours[static_cast<std::size_t>(state)]);
    graphics.setFont(fontSize);
    graphics.drawText(text, area, juce::Justification::centred);
}

CVXButton::CVXButton(const juce::String& name)
    : juce::Button(name)
{
}

void CVXButton::paintButton(juce::Graphics& graphics, bool, bool down)
{
    const auto state = !isEnabled() ? CVXButtonState::disabled
                       : down       ? CVXButtonState::pressed
                                    : CVXButtonState::normal;
    content.paint(graphics, getLocalBounds(), state);
}

void CVXButton::clicked()
{
    if (listener != nullptr)
        listener->buttonClicked(*this);
}

} // namespace Platform
