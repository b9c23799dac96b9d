#pragma once

#include "platform/screen/CVXTextElement.h"
#include "platform/screen/Picture.h"

#include <map>

namespace Platform
{

/** A push button that shows a picture, and on it an icon and lines of text. Message thread. */
class CVXButton : public juce::Button
{
public:
    class Listener
    {
    public:
        virtual ~Listener() = default;
        virtual void buttonClicked(CVXButton& button) = 0;
    };

    explicit CVXButton(const juce::String& name);

    /** Text 0, which every button has. */
    CVXTextElement& getContent() { return texts[0]; }
    /** Text `index`, made if there is none yet. */
    CVXTextElement& addText(int index) { return texts[index]; }
    /** False, and reported once, when the button has no such text. */
    bool setText(int index, const juce::String& newText);
    /** "" where the button has no such text. */
    juce::String getText(int index) const;

    /** The picture under the texts, by its name in the resource packs. */
    void setImagePath(const juce::String& name);
    /** The icon by its name in the resource packs; "" is none, as at first. */
    void setIcon(const juce::String& name);
    /** Where the icon stands in the button; nowhere at first. */
    void setIconArea(juce::Rectangle<int> area) { iconArea = area; }
    /** Takes picture and icon from the packs again. */
    void reloadImage();
    const Picture& getPicture() const { return picture; }
    const Picture& getIcon() const { return icon; }

    void setListener(Listener* newListener) { listener = newListener; }
    /** The button as a child of a window. */
    juce::Component& asComponent() { return *this; }
    /** As a person's click. */
    void click() { clicked(); }

private:
    void paintButton(juce::Graphics& graphics, bool highlighted, bool down) override;
    void clicked() override;

    std::map<int, CVXTextElement> texts;
    Picture picture;
    Picture icon;
    juce::Rectangle<int> iconArea;
    Listener* listener = nullptr;
};

} // namespace Platform
