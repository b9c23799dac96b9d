#include "bench/panel/PagesPane.h"

#include "EngineApi/Catalogue.h"
#include "bench/panel/Sentence.h"
#include "bench/text/Names.h"

namespace BenchPanel
{

namespace
{

constexpr int indent = 2 * Look::grid, lineHeight = 16, placeWidth = 72, timeWidth = 64, outcomeIndent = 3 * Look::grid;
constexpr int mostLines = 2; ///< of a sentence

/** A page that the engine names, as what a place holds; "" and "none" are no page. */
PageLine::Shown shownOf(const std::string& name, const char* none)
{
    const auto page = findPage(name);
    if (page == Pubhead::NUM_OF_PAGES)
        return { none, {}, {}, PageLine::Shown::Kind::empty };
    return { pageTitle(page), name, {}, PageLine::Shown::Kind::there };
}

PageLine::Shown frontOf(const EngineTold& told)
{
    const Ctl::Fields engine(told.state);
    auto shown = shownOf(engine["front"], "nothing");
    shown.reason = withTitles(Ctl::Fields(told.why)["sentence"]);
    if (engine["shown"] != engine["front"] && !shown.name.empty())
        shown.kind = PageLine::Shown::Kind::missing;
    return shown;
}

/** Those that come back when the one in front goes, the next first. */
PageLine::Shown behindOf(const Ctl::Json& pages)
{
    PageLine::Shown shown { {}, {}, {}, PageLine::Shown::Kind::empty };
    for (const auto& record : pages)
    {
        const Ctl::Fields page(record);
        const auto place = page.number("show").value_or(0);
        if (place <= 1 || place >= EngineApi::PageStates::notShown || page["zone"] == "rear")
            continue;
        const auto one = shownOf(page["page"], "");
        shown.title += (shown.title.empty() ? "" : ", ") + one.title;
        shown.name = shown.name.empty() ? one.name : shown.name;
    }
    return shown.title.empty() ? shownOf({}, "nothing") : shown;
}

} // namespace

PageLine::PageLine(Desk& deskToUse, const char* placeToShow)
    : QuietButton(deskToUse, placeToShow, { "pages" })
    , place(placeToShow)
{
}

void PageLine::show(Shown now)
{
    if (shown == now)
        return;
    shown = std::move(now);
    setLines({ shown.name.empty() ? "pages" : "why page " + juce::String(shown.name) });
    repaint();
}

int PageLine::heightFor(int width) const
{
    return lineHeight * (1 + Look::lineCount(Look::font(Look::smallSize), shown.reason, width - 2 * indent, mostLines));
}

void PageLine::paintWords(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    auto area = getLocalBounds().reduced(indent, 0);
    auto line = area.removeFromTop(lineHeight);
    g.setFont(Look::font(Look::smallSize));
    g.setColour(colours.dim);
    g.drawText(place, line.removeFromLeft(placeWidth), juce::Justification::centredLeft);
    g.setColour(shown.kind == Shown::Kind::there     ? colours.good
                : shown.kind == Shown::Kind::missing ? colours.warning
                                                     : colours.dim);
    g.setFont(Look::font(Look::bodySize, true));
    g.drawText(shown.title, line, juce::Justification::centredLeft);
    if (shown.kind == Shown::Kind::there)
        g.setColour(colours.dim);
    g.setFont(Look::font(Look::smallSize));
    g.drawFittedText(shown.reason, area, juce::Justification::topLeft, mostLines, 1.0f);
}

RequestLine::RequestLine(Desk& deskToUse)
    : QuietButton(deskToUse, {})
{
}

void RequestLine::show(RequestWords now, juce::Time at)
{
    constexpr double spread = 0.5;
    if (words == now && std::abs((at - asked).inSeconds()) < spread)
        return;
    words = std::move(now);
    asked = at;
    setLines({ "why request " + juce::String(words.number) });
    setLabel(words.asked);
    repaint();
}

int RequestLine::heightFor(int width) const
{
    const auto outcomeWidth = width - 2 * indent - outcomeIndent;
    return lineHeight * (1 + Look::lineCount(Look::font(Look::smallSize), words.outcome, outcomeWidth, mostLines));
}

void RequestLine::paintWords(juce::Graphics& g)
{
    using Kind = RequestWords::Kind;
    const auto& colours = Look::of(*this).colours;
    auto area = getLocalBounds().reduced(indent, 0);
    auto line = area.removeFromTop(lineHeight);
    g.setFont(Look::font(Look::smallSize));
    g.setColour(colours.dim);
    g.drawText(asked.formatted("%H:%M:%S"), line.removeFromLeft(timeWidth), juce::Justification::centredLeft);
    g.setColour(colours.ink);
    g.drawText(words.asked, line, juce::Justification::centredLeft);
    area.removeFromLeft(outcomeIndent);
    g.setColour(words.kind == Kind::done      ? colours.good
                : words.kind == Kind::refused ? colours.warning
                : words.kind == Kind::failed  ? colours.bad
                                              : colours.accent);
    g.drawFittedText(words.outcome, area, juce::Justification::topLeft, mostLines, 1.0f);
}

void PagesPane::Title::paintWords(juce::Graphics& g)
{
    g.setColour(Look::of(*this).colours.dim);
    g.setFont(Look::font(Look::smallSize));
    g.drawText(getName(), getLocalBounds().reduced(indent, 0), juce::Justification::centredLeft);
}

PagesPane::PagesPane(Desk& deskToUse)
    : Area(deskToUse, "Pages and why")
    , front(desk, "front")
    , behind(desk, "behind")
    , rear(desk, "rear zone")
    , title(desk, "Last requests, newest first", { "requests" })
    , programs(desk)
{
    for (juce::Component* each : { static_cast<juce::Component*>(&front), static_cast<juce::Component*>(&behind),
                                   static_cast<juce::Component*>(&rear), static_cast<juce::Component*>(&title),
                                   static_cast<juce::Component*>(&programs) })
        addAndMakeVisible(each);
    for (std::size_t i = 0; i < requestCount; ++i)
        addChildComponent(*requests.emplace_back(std::make_unique<RequestLine>(desk)));
}

void PagesPane::show(const PanelState& state)
{
    const auto inFront = frontOf(*state.engine);
    front.show(inFront);
    behind.show(behindOf(state.engine->pages));
    rear.show(shownOf(Ctl::Fields(state.engine->state)["rear"], "off"));
    if (std::exchange(told, state.engine) != state.engine)
    {
        showRequests();
        layOut();
    }
    programs.show(state);
}

void PagesPane::showRequests()
{
    const auto now = juce::Time::getCurrentTime();
    constexpr double msInSecond = 1000.0;
    const auto toldFor = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - told->at).count();
    count = std::min(requests.size(), told->requests.size());
    for (std::size_t i = 0; i < count; ++i)
    {
        const auto& request = told->requests[told->requests.size() - 1 - i];
        const auto askedFor = Ctl::Fields(request).number("askedForMs").value_or(0) + toldFor;
        requests[i]->show(wordsOf(request), now - juce::RelativeTime(static_cast<double>(askedFor) / msInSecond));
    }
}

void PagesPane::layOut()
{
    auto area = content().reduced(Look::grid);
    front.setBounds(area.removeFromTop(front.heightFor(area.getWidth())));
    behind.setBounds(area.removeFromTop(lineHeight));
    rear.setBounds(area.removeFromTop(lineHeight));
    area.removeFromTop(Look::grid);
    programs.setBounds(area.removeFromBottom(ProgramDots::rows * ProgramDots::rowHeight).reduced(indent, 0));
    title.setBounds(area.removeFromTop(lineHeight));
    for (std::size_t i = 0; i < requests.size(); ++i)
    {
        const auto height = requests[i]->heightFor(area.getWidth());
        requests[i]->setVisible(i < count && height <= area.getHeight());
        requests[i]->setBounds(area.removeFromTop(height));
    }
}

} // namespace BenchPanel
