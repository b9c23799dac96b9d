#include "bench/program/PageView.h"

#include "bench/Names.h"
#include "bench/program/PageIcons.h"

namespace BenchProgram
{

using namespace Pubhead;

namespace
{

constexpr int margin = 32;
constexpr int topBarHeight = 60;
constexpr int buttonHeight = 64;
constexpr int buttonGap = 12;
constexpr int menuColumns = 4;
constexpr int menuPages[] = { mbFM,      mbAM,     mbWB,      mbSirius, mbUSBAudio, mbiPodAudio,
                              mbBTAudio, mbAuxin2, mbBTPhone, mbCamera, mbEQ,       mbSetup };
constexpr int dayBegins = 7;
constexpr int nightBegins = 19;
constexpr int clockCheckMs = 1000;

bool isNight()
{
    const auto theme = juce::SystemStats::getEnvironmentVariable("HEADUNIT_BENCH_THEME", {});
    if (theme.isNotEmpty())
        return theme == "dark";
    const auto hour = juce::Time::getCurrentTime().getHours();
    return hour < dayBegins || hour >= nightBegins;
}

bool isRearZone(int page)
{
    return page == mbReariPod || page == mbRearAV1 || page == mbRearAV2;
}

/** Whether the page has a source of its own, which can be switched off. */
bool isSource(int page)
{
    return page != mbMainMenu && page != mbSetup && page != mbStandby && page != mbAVOff && page != mbEQ &&
           page != mbAntitheft && page != mbCamera && page != mbBTPhone;
}

juce::String statusOf(int page, int source)
{
    if (page == mbAVOff)
        return "Nothing plays";
    if (page == mbStandby)
        return "Touch a key to go on";
    if (page == mbAntitheft)
        return "Enter the code to unlock";
    if (page == mbCamera)
        return "Rear view";
    if (page == mbBTPhone)
        return "No call";
    if (!isSource(page))
        return "Settings apply at once";
    return page == source ? "Playing" : "Ready";
}

} // namespace

PageView::PageView(const juce::String& windowTitle, bool draws)
    : juce::Component(windowTitle)
    , drawing(draws)
    , dark(isNight())
    , shownPage(NUM_OF_PAGES)
    , source(NUM_OF_PAGES)
{
    setOpaque(true);
    setSize(width, height);
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
    layOut();
    timerCallback();
    startTimer(clockCheckMs);
    if (!isOnDesktop())
        addToDesktop(0);
    setTopLeftPosition(0, 0);
    setVisible(true);
    toFront(false);
    repaint();
}

void PageView::hide()
{
    shownPage = NUM_OF_PAGES;
    stopTimer();
    setVisible(false);
}

void PageView::setSource(int page)
{
    source = page;
    repaint();
}

void PageView::timerCallback()
{
    const auto now = juce::Time::getCurrentTime().formatted("%H:%M");
    if (now != clock)
    {
        clock = now;
        repaint(0, 0, width, topBarHeight);
    }
}

void PageView::layOut()
{
    tiles.clear();
    buttons.clear();
    auto area =
        juce::Rectangle<int>(width, height).reduced(margin, 0).withTrimmedTop(topBarHeight).withTrimmedBottom(24);
    if (shownPage == mbMainMenu)
    {
        const int count = static_cast<int>(std::size(menuPages));
        const int rows = (count + menuColumns - 1) / menuColumns;
        const int tileWidth = (area.getWidth() - (menuColumns - 1) * buttonGap) / menuColumns;
        const int tileHeight = (area.getHeight() - (rows - 1) * buttonGap) / rows;
        for (int i = 0; i < count; ++i)
            tiles.push_back({ { area.getX() + (i % menuColumns) * (tileWidth + buttonGap),
                                area.getY() + (i / menuColumns) * (tileHeight + buttonGap), tileWidth, tileHeight },
                              menuPages[i],
                              false,
                              Bench::pageInfo(menuPages[i])->title });
        return;
    }
    if (shownPage == mbAntitheft)
        return;
    auto row = area.removeFromBottom(buttonHeight);
    std::vector<Touch> wanted { { {}, mbMainMenu, false, "Menu" } };
    if (shownPage == mbEQ || shownPage == mbSetup || shownPage == mbCamera || shownPage == mbBTPhone)
        wanted.push_back({ {}, shownPage, true, "Close" });
    else
        wanted.push_back({ {}, mbEQ, false, "Equaliser" });
    if (isSource(shownPage))
        wanted.push_back({ {}, mbAVOff, true, "Off" });
    const int count = static_cast<int>(wanted.size());
    const int buttonWidth = (row.getWidth() - (count - 1) * buttonGap) / count;
    for (auto& button : wanted)
    {
        button.area = row.removeFromLeft(buttonWidth);
        row.removeFromLeft(buttonGap);
        buttons.push_back(button);
    }
}

void PageView::mouseUp(const juce::MouseEvent& event)
{
    for (const auto* list : { &tiles, &buttons })
        for (const auto& touch : *list)
            if (touch.area.contains(event.getPosition()))
            {
                if (touch.leaves && left)
                    left(shownPage);
                else if (!touch.leaves && chosen)
                    chosen(touch.page);
                return;
            }
}

juce::Font PageView::font(float size, bool bold) const
{
    return juce::Font("DejaVu Sans", size, bold ? juce::Font::bold : juce::Font::plain);
}

juce::Colour PageView::ink(float strength) const
{
    return (dark ? juce::Colours::white : juce::Colour(0xff12222e)).withAlpha(strength);
}

void PageView::paint(juce::Graphics& g)
{
    const auto top = dark ? juce::Colour(0xff132230) : juce::Colour(0xfff6f9fb);
    const auto bottom = dark ? juce::Colour(0xff0a121a) : juce::Colour(0xffdde6ec);
    g.setGradientFill(juce::ColourGradient::vertical(top, 0.0f, bottom, static_cast<float>(height)));
    g.fillAll();
    if (shownPage == mbMainMenu)
        paintMenu(g);
    else
        paintPage(g);
    paintTopBar(g);
    paintButtons(g);
}

void PageView::paintTopBar(juce::Graphics& g) const
{
    const auto bar = juce::Rectangle<int>(margin, 0, width - 2 * margin, topBarHeight);
    g.setFont(font(19.0f));
    g.setColour(ink(0.62f));
    g.drawText(isRearZone(shownPage) ? "Rear zone" : "Front zone", bar, juce::Justification::centredLeft);
    g.setColour(ink(0.85f));
    g.drawText(clock, bar, juce::Justification::centredRight);
}

void PageView::paintMenu(juce::Graphics& g) const
{
    for (const auto& tile : tiles)
    {
        const auto area = tile.area.toFloat();
        g.setColour(dark ? juce::Colour(0xff1d3142) : juce::Colours::white);
        g.fillRoundedRectangle(area, 14.0f);
        g.setColour(ink(0.10f));
        g.drawRoundedRectangle(area.reduced(0.5f), 14.0f, 1.0f);
        auto inside = tile.area.reduced(10);
        const auto label = inside.removeFromBottom(30);
        drawPageIcon(g, tile.page, inside.toFloat().withSizeKeepingCentre(46.0f, 46.0f), pageColour(tile.page));
        g.setColour(ink(0.88f));
        g.setFont(font(17.0f));
        g.drawText(tile.label, label, juce::Justification::centred);
    }
}

void PageView::paintPage(juce::Graphics& g) const
{
    const auto* info = Bench::pageInfo(shownPage);
    const auto colour = pageColour(shownPage);
    constexpr float plate = 176.0f;
    const auto area = juce::Rectangle<int>(width, height)
                          .reduced(margin, 0)
                          .withTrimmedTop(topBarHeight)
                          .withTrimmedBottom(buttonHeight + 24);
    const auto icon = juce::Rectangle<float>(static_cast<float>(margin) + 16.0f,
                                             static_cast<float>(area.getCentreY()) - plate / 2.0f, plate, plate);
    g.setGradientFill(
        juce::ColourGradient::vertical(colour.brighter(0.12f), icon.getY(), colour.darker(0.35f), icon.getBottom()));
    g.fillRoundedRectangle(icon, 28.0f);
    drawPageIcon(g, shownPage, icon.reduced(42.0f), juce::Colours::white);

    auto text = area.withTrimmedLeft(static_cast<int>(plate) + 56)
                    .withSizeKeepingCentre(area.getWidth() - static_cast<int>(plate) - 56, 124);
    text.setLeft(static_cast<int>(icon.getRight()) + 40);
    g.setColour(ink(0.95f));
    g.setFont(font(46.0f, true));
    g.drawFittedText(info != nullptr ? info->title : pageName(shownPage), text.removeFromTop(60),
                     juce::Justification::centredLeft, 1, 0.7f);
    g.setColour(colour.interpolatedWith(ink(1.0f), dark ? 0.25f : 0.15f));
    g.setFont(font(24.0f));
    g.drawText(statusOf(shownPage, source), text.removeFromTop(36), juce::Justification::centredLeft);
    g.setColour(ink(0.38f));
    g.setFont(font(15.0f));
    g.drawText(juce::String(pageName(shownPage)) + "   " + getName(), text.removeFromTop(28),
               juce::Justification::centredLeft);
}

void PageView::paintButtons(juce::Graphics& g) const
{
    g.setFont(font(19.0f));
    for (const auto& button : buttons)
    {
        const auto area = button.area.toFloat();
        g.setColour(dark ? juce::Colour(0xff1d3142) : juce::Colours::white);
        g.fillRoundedRectangle(area, 14.0f);
        g.setColour(ink(0.10f));
        g.drawRoundedRectangle(area.reduced(0.5f), 14.0f, 1.0f);
        g.setColour(ink(0.88f));
        g.drawText(button.label, button.area, juce::Justification::centred);
    }
}

} // namespace BenchProgram
