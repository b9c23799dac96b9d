#include "bench/program/PageView.h"

#include "bench/program/PagePainter.h"
#include "bench/text/Names.h"
#include "platform/screen/Window.h"

namespace BenchProgram
{

using namespace Pubhead;

namespace
{

constexpr int clockCheckMs = 1000;

juce::String wish(const char* name)
{
    return juce::SystemStats::getEnvironmentVariable(name, {});
}

} // namespace

PageView::PageView(const juce::String& windowTitle, bool draws)
    : juce::Component(windowTitle)
    , drawing(draws)
    , shownPage(NUM_OF_PAGES)
    , layout(shownPage, shown)
{
    setNight(false);
    setOpaque(true);
    setSize(PageLayout::width, PageLayout::height);
}

PageView::~PageView()
{
    stopTimer();
}

void PageView::show(int page)
{
    shownPage = page;
    if (!drawing)
        return;
    pressed.reset();
    askContent();
    timerCallback();
    startTimer(clockCheckMs);
    if (!isOnDesktop())
        addToDesktop(0);
    setTopLeftPosition(0, 0);
    setVisible(true);
    repaint();
    // Once the page is said to be shown, the one below it goes: this one has to be above, drawn, and at the display.
    Platform::setForegroundWindow(
        static_cast<Platform::WindowHandle>(reinterpret_cast<std::uintptr_t>(getWindowHandle())));
    getPeer()->performAnyPendingRepaintsNow();
    toFront(false);
}

void PageView::clear()
{
    shownPage = NUM_OF_PAGES;
    pressed.reset();
    stopTimer();
    setVisible(false);
    // The toolkit keeps the order until something else is sent to the display; a question takes it along.
    if (const auto* peer = getPeer())
        juce::ignoreUnused(peer->isFocused());
}

void PageView::setNight(bool night)
{
    const auto theme = wish("HEADUNIT_BENCH_THEME");
    dark = theme.isEmpty() ? night : theme == "dark";
    repaint();
}

void PageView::setSource(int)
{
    // What a page says of itself depends on whether its source plays.
    contentChanged();
}

void PageView::contentChanged()
{
    if (!drawing || shownPage == NUM_OF_PAGES)
        return;
    askContent();
    repaint();
}

void PageView::askContent()
{
    shown = content ? content(shownPage) : PageContent {};
    if (shown.title.isEmpty())
    {
        const auto* info = Bench::pageInfo(shownPage);
        shown.title = info != nullptr ? info->title : pageName(shownPage);
    }
    layout = PageLayout(shownPage, shown);
}

void PageView::timerCallback()
{
    const auto now = juce::Time::getCurrentTime().formatted("%H:%M");
    if (now == clock)
        return;
    clock = now;
    repaint();
}

void PageView::mouseDown(const juce::MouseEvent& event)
{
    pressed = event.getPosition();
    repaint();
}

void PageView::mouseUp(const juce::MouseEvent& event)
{
    // A finger that came down on another page, or has moved away from where it came down, means nothing here.
    const auto* touch = pressedTouch();
    const bool meant = touch != nullptr && touch == layout.touchAt(event.getPosition());
    pressed.reset();
    repaint();
    if (touch == nullptr && missed)
        missed(event.getPosition());
    if (!meant)
        return;
    // What is told may change the content, and with it the layout.
    const auto [area, does, number] = *touch;
    if (does == Touch::Does::touches && touched)
        touched(shownPage, number);
    else if (does == Touch::Does::chooses && chosen)
        chosen(number);
    else if (does == Touch::Does::leaves && left)
        left(number);
}

const Touch* PageView::pressedTouch() const
{
    return pressed ? layout.touchAt(*pressed) : nullptr;
}

void PageView::paint(juce::Graphics& g)
{
    const auto* touch = pressedTouch();
    const auto ids = wish("HEADUNIT_BENCH_IDS").isEmpty() ? "" : juce::String(pageName(shownPage)) + " of " + getName();
    const PageFrame frame { shownPage, dark, clock, ids, touch != nullptr ? touch->area : juce::Rectangle<int>() };
    PagePainter(g, frame, layout, shown).paint();
}

} // namespace BenchProgram
