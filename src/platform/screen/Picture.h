#pragma once

#include "platform/base/Logger.h"

#include <juce_graphics/juce_graphics.h>

namespace Platform
{

/**
    The log lines of the widgets: what a layout or picture lacks is logged the first time only, however often it is
    asked for. After 64 different problems the rest is not logged, which is logged too. Message thread.
*/
void reportOnce(const Log::Line& line, const juce::String& problem);

/** A picture of the resource packs, which is shown by a control and can be replaced. Message thread. */
class Picture
{
public:
    /**
        Takes the PNG file of that name; "" is no picture. A missing or damaged one is reported, and nothing is shown.
    */
    void setName(const juce::String& newName);
    /** Reads it from the packs again. */
    void reload();

    const juce::String& getName() const { return name; }
    bool isLoaded() const { return image.isValid(); }
    /** Fills the area. */
    void paint(juce::Graphics& graphics, juce::Rectangle<int> area) const;

private:
    juce::String name;
    juce::Image image;
};

} // namespace Platform
