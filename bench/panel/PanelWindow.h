#pragma once

#include "bench/panel/PanelView.h"

namespace BenchPanel
{

/** The panel's window: its view as large as it fits, in the middle. Message thread. */
class PanelWindow : public juce::DocumentWindow
{
public:
    PanelWindow(Unit& unit, const PanelView::Options& options);

    /** As that of its view. */
    void endLines() { frame.view.endLines(); }

private:
    /** Keeps the view's shape. */
    class Frame : public juce::Component
    {
    public:
        Frame(Unit& unit, const PanelView::Options& options);

        PanelView view;

    private:
        void resized() override;
        void paint(juce::Graphics& g) override { g.fillAll(juce::Colours::black); }
    };

    const std::function<void(const std::string&)> ended;
    Frame frame;

    void closeButtonPressed() override { ended({}); }
};

/**
    Shows the panel on the display of the environment until the person closes it or the journal is interrupted. It is the
    main thread's, once in a process. The exit status.
*/
int runPanel(Unit& unit, const PanelView::Options& options);

} // namespace BenchPanel
