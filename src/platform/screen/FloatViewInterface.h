#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace Platform
{

/** A view that floats above the pages until it is hidden. Message thread. */
class FloatViewInterface
{
public:
    virtual ~FloatViewInterface() = default;
    /** Brings the view in front of the others. The meaning of the parameter is the view's own. */
    virtual void show(int parameter);
    virtual void hide();

protected:
    explicit FloatViewInterface(juce::Component& shownComponent)
        : view(shownComponent)
    {
    }

private:
    juce::Component& view;
};

} // namespace Platform
