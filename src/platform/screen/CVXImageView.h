#pragma once

#include "platform/screen/Picture.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace Platform
{

/** Shows one picture of the resource packs. Message thread. */
class CVXImageView : public juce::Component
{
public:
    void setImage(const juce::String& name)
    {
        picture.setName(name);
        repaint();
    }
    /** Takes the picture from the packs again. */
    void reloadImage()
    {
        picture.reload();
        repaint();
    }
    const Picture& getPicture() const { return picture; }

    void paint(juce::Graphics& graphics) override { picture.paint(graphics, getLocalBounds()); }

private:
    Picture picture;
};

} // namespace Platform
