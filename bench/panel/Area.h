#pragma once

#include "bench/panel/Desk.h"
#include "bench/panel/Look.h"
#include "bench/panel/PanelState.h"

namespace BenchPanel
{

/** A part of the panel, with a heading or without one. Message thread. */
class Area : public juce::Component
{
public:
    /** The desk must outlive it. */
    Area(Desk& deskToUse, const juce::String& headingToShow);

    /**
        What there is now, as often as the display shows a picture while something changes. Only what looks different
        is to be repainted: see `repaintIfChanged`.
    */
    virtual void show(const PanelState& state) = 0;

    void paint(juce::Graphics& g) override;

protected:
    Desk& desk;

    /** Without the heading. */
    juce::Rectangle<int> content() const;
    /** Keeps what is shown, and draws the area anew if it was different. */
    template <typename Shown>
    void repaintIfChanged(Shown& shown, Shown now)
    {
        if (shown == now)
            return;
        shown = std::move(now);
        repaint();
    }
};

} // namespace BenchPanel
