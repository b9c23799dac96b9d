#pragma once

#include <array>
#include <juce_gui_basics/juce_gui_basics.h>

namespace Platform
{

/** How a button looks just now; contents give their colours by these numbers. */
enum class CVXButtonState : int { pressed = 1, disabled = 3, normal = 5 };

/** A line of text as the content of a button, with a colour for each state. */
class CVXTextElement
{
public:
    void setText(const juce::String& newText) { text = newText; }
    void setFontSize(float size) { fontSize = size; }
    void setTextColour(CVXButtonState state, juce::Colour colour);

    void paint(juce::Graphics& graphics, juce::Rectangle<int> area, CVXButtonState state) const;

private:
    juce::String text;
    float fontSize = 15.0f;
    std::array<juce::Colour, 6> colours {};
};

/** A push button that shows its content element. Message thread. */
class CVXButton : private juce::Button
{
public:
    class Listener
    {
    public:
        virtual ~Listener() = default;
        virtual void buttonClicked(CVXButton& button) = 0;
    };

    explicit CVXButton(const juce::String& name);

    CVXTextElement& getContent() { return content; }
    void setListener(Listener* newListener) { listener = newListener; }
    /** The button as a child of a window. */
    juce::Component& asComponent() { return *this; }
    using juce::Button::setBounds;
    /** As a person's click. */
    void click() { clicked(); }

private:
    void paintButton(juce::Graphics& graphics, bool highlighted, bool down) override;
    void clicked() override;

    CVXTextElement content;
    Listener* listener = nullptr;
};

} // namespace Platform
