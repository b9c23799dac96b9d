#include "bench/panel/PanelWindow.h"

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

PanelWindow::PanelWindow(Unit& unit, const PanelView::Options& options, std::function<void()> closedCall)
    : juce::DocumentWindow("Head unit", juce::Colours::black, allButtons)
    , closed(std::move(closedCall))
    , frame(unit, options)
{
    setUsingNativeTitleBar(true);
    setResizable(true, false);
    constexpr int leastShare = 2;
    setResizeLimits(PanelView::width / leastShare, PanelView::height / leastShare, 4 * PanelView::width,
                    4 * PanelView::height);
    setContentNonOwned(&frame, true);
    centreWithSize(PanelView::width, PanelView::height);
    setVisible(true);
}

namespace
{

/** What the application is made with, as the framework makes it itself. */
struct Start
{
    Unit* unit = nullptr;
    PanelView::Options options;
};

Start start;

/** A JUCE application, so that the toolkit lives through what an X server without a window manager complains about. */
class PanelApplication : public juce::JUCEApplication, private juce::Timer
{
public:
    const juce::String getApplicationName() override { return "Head unit"; }
    const juce::String getApplicationVersion() override { return {}; }
    bool moreThanOneInstanceAllowed() override { return true; }

    void initialise(const juce::String&) override
    {
        window = std::make_unique<PanelWindow>(*start.unit, start.options, [] { quit(); });
        constexpr int looksPerSecond = 10;
        startTimerHz(looksPerSecond);
    }

    void shutdown() override
    {
        start.unit->journal.interrupt(); // ends what the lines wait for
        window.reset();
    }

private:
    std::unique_ptr<PanelWindow> window;

    void timerCallback() override
    {
        if (start.unit->journal.isInterrupted())
            quit();
    }
};

} // namespace

int runPanel(Unit& unit, const PanelView::Options& options)
{
    start = { &unit, options };
    juce::JUCEApplicationBase::createInstance = []() -> juce::JUCEApplicationBase* { return new PanelApplication(); };
    const char* name = "headunit-bench";
    return juce::JUCEApplicationBase::main(1, &name);
}

} // namespace BenchPanel
