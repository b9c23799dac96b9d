#include "platform/screen/CVXButton.h"

namespace Platform
{

CVXButton::CVXButton(const juce::String& name)
    : juce::Button(name)
{
    addText(0);
}

bool CVXButton::setText(int index, const juce::String& newText)
{
    const auto found = texts.find(index);
    if (found == texts.end())
    {
        reportOnce(Log("platform/gui/CVXButton", "Widgets")(),
                   "the button " + getName() + " has no text " + juce::String(index));
        return false;
    }
    found->second.setText(newText);
    repaint();
    return true;
}

juce::String CVXButton::getText(int index) const
{
    const auto found = texts.find(index);
    return found == texts.end() ? juce::String() : found->second.getText();
}

void CVXButton::setImagePath(const juce::String& name)
{
    picture.setName(name);
    repaint();
}

void CVXButton::setIcon(const juce::String& name)
{
    icon.setName(name);
    repaint();
}

void CVXButton::reloadImage()
{
    picture.reload();
    icon.reload();
    repaint();
}

void CVXButton::paintButton(juce::Graphics& graphics, bool, bool down)
{
    const auto state = !isEnabled() ? CVXButtonState::disabled
                       : down       ? CVXButtonState::pressed
                                    : CVXButtonState::normal;
    picture.paint(graphics, getLocalBounds());
    icon.paint(graphics, iconArea);
    for (const auto& [index, element] : texts)
        element.paint(graphics, getLocalBounds(), state);
}

void CVXButton::clicked()
{
    if (listener != nullptr)
        listener->buttonClicked(*this);
}

} // namespace Platform
