#include "bench/panel/PanelWindow.h"

#include "bench/panel/DisplayLoss.h"

#include <cstdlib>
#include <iostream>

namespace BenchPanel
{

PanelWindow::Frame::Frame(Unit& unit, const PanelView::Options& options)
    : view(unit, options)
{
    setOpaque(true);
    addAndMakeVisible(view);
    setSize(PanelView::width, PanelView::height);
}

void PanelWindow::Frame::resized()
{
    const auto whole = juce::Rectangle<float>(PanelView::width, PanelView::height);
    view.setTransform(juce::RectanglePlacement(juce::RectanglePlacement::centred)
                          .getTransformToFit(whole, getLocalBounds().toFloat()));
}

PanelWindow::PanelWindow(Unit& unit, const PanelView::Options& options)
    : juce::DocumentWindow("Head unit", juce::Colours::black, allButtons)
    , ended(options.ended)
    , frame(unit, options)
{
    setUsingNativeTitleBar(true);
    setResizable(true, false);
    constexpr int leastShare = 2;
    setResizeLimits(PanelView::width / leastShare, PanelView::height / leastShare, 4 * PanelView::width,
                    4 * PanelView::height);
    setContentNonOwned(&frame, true);
    // On a small screen it is as large as that.
    auto size = juce::Rectangle<int>(PanelView::width, PanelView::height);
    if (const auto* screen = juce::Desktop::getInstance().getDisplays().getPrimaryDisplay())
        size = size.getIntersection(screen->userArea.withZeroOrigin());
    centreWithSize(size.getWidth(), size.getHeight());
    setVisible(true);
}

namespace
{

/** What the application is made with, as the framework makes it itself. */
struct Start
{
    Unit* unit = nullptr;
    PanelView::Options options;
    std::unique_ptr<PanelWindow> window;
};

Start start;

/** Nothing can be drawn any longer; the unit cleans up all the same, and what is recorded is written. */
void endWithoutDisplay()
{
    std::cerr << "The display of the panel has gone." << std::endl;
    start.unit->journal.interrupt();
    start.window->endLines();
    start.unit->stop();
    std::_Exit(1);
}

/** A JUCE application, so that the toolkit lives through what an X server without a window manager complains about. */
class PanelApplication : public juce::JUCEApplication, private juce::Timer
{
public:
    const juce::String getApplicationName() override { return "Head unit"; }
    const juce::String getApplicationVersion() override { return {}; }
    bool moreThanOneInstanceAllowed() override { return true; }

    void initialise(const juce::String&) override
    {
        start.options.ended = [this](const std::string& error)
        {
            std::cerr << error << (error.empty() ? "" : "\n");
            setApplicationReturnValue(error.empty() ? 0 : 1);
            quit();
        };
        start.window = std::make_unique<PanelWindow>(*start.unit, start.options);
        onDisplayLoss(endWithoutDisplay);
        constexpr int looksPerSecond = 10;
        startTimerHz(looksPerSecond);
    }

    void shutdown() override
    {
        start.unit->journal.interrupt(); // ends what the lines wait for
        start.window.reset();
    }

private:
    void timerCallback() override
    {
        if (start.unit->journal.isEnded())
            quit();
    }
};

} // namespace

int runPanel(Unit& unit, const PanelView::Options& options)
{
    start.unit = &unit;
    start.options = options;
    juce::JUCEApplicationBase::createInstance = []() -> juce::JUCEApplicationBase* { return new PanelApplication(); };
    const char* name = "headunit-bench";
    return juce::JUCEApplicationBase::main(1, &name);
}

} // namespace BenchPanel
