#pragma once

#include "platform/screen/CVXTextElement.h"

namespace Platform
{

/** A line of text. Message thread. */
class CVXStatic : public juce::Component
{
public:
    CVXTextElement& getContent() { return content; }
    void setText(const juce::String& text)
    {
        content.setText(text);
        repaint();
    }
    void paint(juce::Graphics& graphics) override { content.paint(graphics, getLocalBounds(), CVXButtonState::normal); }

private:
    CVXTextElement content;
};

} // namespace Platform
