#pragma once

#include "platform/screen/Picture.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace Platform
{

/**
    Makes the controls of a layout of the resource packs ("volumebar\volumebar.bin"). Null when it is missing, damaged
    or not a layout, which is reported once. Message thread.

    A layout is a tree of the elements Window (its root), Group, Image, Button with Text elements and an Icon, and
    Static. All but Text and Icon have `name`, `x`, `y`, `width`, `height` in pixels from the parent's corner (a
    Window's: the screen's) and `visible` (1). Image, Button and Icon: `image`. Text: `index`, `x`, `y`, `width`,
    `height` (all of the button). Icon: the same without `index`. Text and Static: `text`, `size` in pixels, `colour`
    (AARRGGBB), `bold`, `justify` (left, centre, right).
*/
std::unique_ptr<juce::Component> loadCtrlFromFile(const juce::String& name);

struct CVXRelationHelper
{
    /** The control of that type and name below a root, which may be null. Null, and reported once, without it. */
    template <typename Control>
    static Control* findComponent(juce::Component* root, const juce::String& name)
    {
        auto* found = dynamic_cast<Control*>(find(root, name));
        if (found == nullptr && root != nullptr)
            reportOnce(Log("platform/gui/Layout", "Widgets")(),
                       "the layout " + root->getName() + " lacks the control " + name);
        return found;
    }

private:
    static juce::Component* find(juce::Component* root, const juce::String& name);
};

} // namespace Platform
