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

/**
    A picture of the resource packs, which is shown by a control and can be replaced. It is decoded when it is to be
    seen, as most of a bar's pictures never are. Message thread.
*/
class Picture
{
public:
    /**
        Takes the PNG file of that name; "" is no picture. A missing one is reported, a damaged one when it is to be
        seen, and nothing is shown.
    */
    void setName(const juce::String& newName);
    /** Reads it from the packs again. */
    void reload();

    const juce::String& getName() const { return name; }
    bool isLoaded() const { return decoded().isValid(); }
    /** Fills the area. */
    void paint(juce::Graphics& graphics, juce::Rectangle<int> area) const;

private:
    const juce::Image& decoded() const;

    juce::String name;
    mutable bool isDecoded = true; ///< as far as it can be
    mutable juce::Image image;
};

} // namespace Platform
