#include "bench/panel/EventsPane.h"

#include "bench/panel/Row.h"

#include <algorithm>

namespace BenchPanel
{

namespace
{

constexpr int rowHeight = 18, originHeight = 4 * rowHeight, linesPerWheelStep = 3;

/** By the clock on the wall. */
juce::String timeOfDay(Clock::time_point at)
{
    const auto ago = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - at);
    return (juce::Time::getCurrentTime() - juce::RelativeTime::milliseconds(static_cast<juce::int64>(ago.count())))
        .formatted("%H:%M:%S");
}

juce::String secondsText(Clock::duration time)
{
    return juce::String(std::chrono::duration<double>(time).count(), 3);
}

} // namespace

EventLines::EventLines(Desk& deskToUse, const EventList& listToShow)
    : juce::Component("Lines")
    , desk(deskToUse)
    , list(listToShow)
{
    setTitle("Events");
    setWantsKeyboardFocus(true);
}

void EventLines::update()
{
    lines = list.lines();
    if (opened && list.find(opened->number) == nullptr)
        close();
    point(mouse);
    repaint();
}

juce::Rectangle<int> EventLines::listed() const
{
    return getLocalBounds().withTrimmedBottom(opened ? originHeight : 0);
}

juce::Rectangle<int> EventLines::wayBack() const
{
    constexpr int width = 128;
    return last ? listed().removeFromBottom(rowHeight).removeFromRight(width) : juce::Rectangle<int>();
}

std::pair<std::size_t, std::size_t> EventLines::seen() const
{
    const auto fitting = static_cast<std::size_t>(listed().getHeight() / rowHeight);
    const auto placeOf = [](const EventList::Line& line) { return line.event.place(); };
    const auto lowest = opened ? std::optional(opened->lowest) : last;
    const auto found = lowest ? std::ranges::upper_bound(lines, *lowest, {}, placeOf) : lines.end();
    const auto end = std::max(static_cast<std::size_t>(found - lines.begin()), std::min(fitting, lines.size()));
    return { end - std::min(fitting, end), end };
}

std::optional<std::size_t> EventLines::lineAt(juce::Point<int> at) const
{
    const auto [first, end] = seen();
    const auto line = first + static_cast<std::size_t>(std::max(at.y, 0) / rowHeight);
    return listed().contains(at) && line < end ? std::optional(line) : std::nullopt;
}

void EventLines::point(std::optional<juce::Point<int>> at)
{
    mouse = at;
    const auto line = at ? lineAt(*at) : std::nullopt;
    const auto number = line ? std::optional(lines[*line].event.number) : std::nullopt;
    if (std::exchange(marked, number) == number)
        return;
    desk.markMoment(line ? std::optional(lines[*line].event.at) : std::nullopt);
    repaint();
}

void EventLines::open(std::size_t line)
{
    const auto& event = lines[line].event;
    const auto first = seen().first;
    opened = { event.number, {} };
    // There is less room now.
    const auto fitting = static_cast<std::size_t>(listed().getHeight() / rowHeight);
    const auto lowest = line < first ? line : std::max(line, std::min(first + fitting, lines.size()) - 1);
    opened->lowest = lines[lowest].event.place();
    if (const auto* whole = list.find(event.number))
    {
        const auto origin = list.originOf(*whole);
        const auto text = whole->stream + "  " + whole->text + "\n" + origin.frame + "\n" + origin.log;
        setDescription(juce::String::fromUTF8(text.c_str()));
    }
    repaint();
}

void EventLines::close()
{
    opened.reset();
    setDescription({});
    repaint();
}

void EventLines::scroll(int by)
{
    const auto end = static_cast<int>(seen().second) + by;
    close();
    if (end >= static_cast<int>(lines.size()))
        last.reset();
    else
        last = lines[static_cast<std::size_t>(std::max(end, 1) - 1)].event.place();
    point(mouse);
    repaint();
}

void EventLines::mouseUp(const juce::MouseEvent& event)
{
    if (wayBack().contains(event.getPosition()))
        return scroll(static_cast<int>(lines.size()));
    const auto line = lineAt(event.getPosition());
    if (line && !isOpened(lines[*line]))
        open(*line);
    else
        close();
}

void EventLines::mouseWheelMove(const juce::MouseEvent&, const juce::MouseWheelDetails& wheel)
{
    scroll(wheel.deltaY > 0 ? -linesPerWheelStep : linesPerWheelStep);
}

bool EventLines::keyPressed(const juce::KeyPress& key)
{
    const bool up = key == juce::KeyPress::upKey;
    if (key == juce::KeyPress::escapeKey && opened)
        close();
    else if ((up || key == juce::KeyPress::downKey) && !lines.empty())
    {
        const auto now = std::ranges::find_if(lines, [&](auto& line) { return isOpened(line); }) - lines.begin();
        open(static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(now + (up ? -1 : 1), 0, std::ssize(lines) - 1)));
    }
    else if (key == juce::KeyPress::endKey)
        scroll(static_cast<int>(lines.size()));
    else
        return false;
    return true;
}

void EventLines::paint(juce::Graphics& g)
{
    g.setFont(Look::font(Look::smallSize));
    const auto [first, end] = seen();
    auto area = listed();
    for (auto line = first; line < end; ++line)
        paintLine(g, lines[line], area.removeFromTop(rowHeight));
    if (opened)
        paintOrigin(g, getLocalBounds().removeFromBottom(originHeight));
    const auto& colours = Look::of(*this).colours;
    if (last)
    {
        Look::plate(g, wayBack(), colours.button, colours.buttonEdge);
        g.setColour(colours.accent);
        g.drawText("to the newest: End", wayBack(), juce::Justification::centred);
    }
    if (hasKeyboardFocus(false))
    {
        g.setColour(colours.accent);
        g.drawRoundedRectangle(getLocalBounds().toFloat().reduced(0.5f), Look::corner, 1.0f);
    }
}

void EventLines::paintLine(juce::Graphics& g, const EventList::Line& line, juce::Rectangle<int> row) const
{
    constexpr int timeWidth = 58, subjectWidth = 68, markWidth = 14, markSize = 6;
    const auto& colours = Look::of(*this).colours;
    const auto& event = line.event;
    if (isOpened(line) || event.number == marked)
    {
        g.setColour(colours.accent.withAlpha(isOpened(line) ? 0.25f : 0.12f));
        g.fillRoundedRectangle(row.toFloat(), 3.0f);
    }
    row = row.reduced(Look::grid, 0);
    g.setColour(colours.dim);
    g.drawText(line.isSaid() ? timeOfDay(event.at) : secondsText(line.after), row.removeFromLeft(timeWidth),
               juce::Justification::centredLeft);
    if (!line.isSaid())
        g.drawText(subjectOf(event).name, row.removeFromRight(subjectWidth), juce::Justification::centredRight);
    const auto mark = row.removeFromLeft(markWidth).withSizeKeepingCentre(markSize, markSize);
    const bool isFault = event.stream == "mcu link";
    // As in the lanes of the link.
    if (isFault || event.stream.starts_with("frame ") || event.stream.starts_with("sent "))
    {
        g.setColour(isFault ? colours.bad : event.stream.starts_with("sent ") ? colours.accent : colours.warning);
        g.fillRect(mark);
    }
    g.setColour(line.isSaid() ? colours.accent : isFault ? colours.bad : colours.ink);
    g.drawText(juce::String::fromUTF8(wordsOf(event).c_str()), row, juce::Justification::centredLeft);
}

void EventLines::paintOrigin(juce::Graphics& g, juce::Rectangle<int> area) const
{
    const auto& colours = Look::of(*this).colours;
    Look::plate(g, area, colours.well, colours.edge);
    area = area.reduced(Look::grid, 2);
    const auto texts = juce::StringArray::fromLines(getDescription());
    const auto mono = juce::Font("DejaVu Sans Mono", Look::smallSize - 1.0f, juce::Font::plain);
    const std::tuple<juce::Font, juce::Colour, int> rows[] { { Look::font(Look::smallSize), colours.ink, 2 },
                                                             { mono, colours.warning, 2 },
                                                             { mono, colours.dim, 2 } };
    for (int i = 0; i < texts.size(); ++i)
    {
        const auto& [font, colour, most] = rows[i];
        const auto text = juce::StringArray::fromTokens(texts[i], false).joinIntoString(" ");
        const auto lineCount = Look::lineCount(font, text, area.getWidth(), most);
        if (lineCount == 0)
            continue;
        g.setFont(font);
        g.setColour(colour);
        g.drawFittedText(text, area.removeFromTop(lineCount * (rowHeight - Look::grid)), juce::Justification::topLeft,
                         lineCount, 1.0f);
    }
}

EventsPane::EventsPane(Desk& deskToUse)
    : Area(deskToUse, "Events")
    , lines(deskToUse, list)
{
    const auto subjects = allSubjects();
    for (std::size_t i = 0; i < subjects.size(); ++i)
    {
        auto& chip = *chips.emplace_back(
            std::make_unique<LineButton>(desk, subjects[i].name, ButtonLines { "events " + subjects[i].name }));
        chip.pressed = [this, i] { toggle(i); };
        addAndMakeVisible(chip);
        chip.setTone(list.wants(subjects[i]) ? LineButton::Tone::lit : LineButton::Tone::plain);
    }
    addAndMakeVisible(lines);
}

void EventsPane::toggle(std::size_t subject)
{
    const auto& each = allSubjects()[subject];
    list.want(each, !list.wants(each));
    chips[subject]->setTone(list.wants(each) ? LineButton::Tone::lit : LineButton::Tone::plain);
    lines.update();
}

void EventsPane::show(const PanelState& state)
{
    if (std::exchange(seen, state.journalEnd.number) == state.journalEnd.number)
        return;
    list.take(*state.events);
    lines.update();
}

void EventsPane::resized()
{
    constexpr int chipHeight = 22, gap = Look::grid, margin = 2 * Look::grid;
    auto area = content().reduced(margin, Look::grid);
    layOutRow(chips, Look::font(Look::bodySize), area.removeFromTop(chipHeight));
    area.removeFromTop(gap);
    lines.setBounds(area);
}

} // namespace BenchPanel
