#include "bench/panel/LinkArea.h"

#include "bench/panel/Row.h"

namespace BenchPanel
{

namespace
{

constexpr int lanesHeight = 46, countersHeight = 20, buttonHeight = 26, gap = 4;

struct LinkFault
{
    const char* label;
    const char* line;
    std::vector<ConsoleLine> more;
};

const std::vector<LinkFault>& linkFaults()
{
    static const std::vector<LinkFault> all {
        { "Silent 3 s", "mcu silent 3s", { "mcu silent 10s", "mcu silent 60s", "mcu reset" } },
        { "Drop 1", "mcu drop 1", { "mcu drop 3", "mcu drop every 5", "mcu drop every 0" } },
        { "Corrupt", "mcu corrupt 1", { "mcu corrupt 3" } },
        { "Repeat", "mcu repeat 1", { "mcu repeat 3" } },
        { "Delay", "mcu delay 300ms", { "mcu delay 100ms", "mcu delay 1s", "mcu delay 0" } },
        { "No ack", "mcu no-ack 1", { "mcu no-ack 3", "mcu no-ack 3 EVENT_DEVICE_STATUS" } },
    };
    return all;
}

} // namespace

LinkLanes::LinkLanes()
    : juce::Component("Link")
{
    setInterceptsMouseClicks(false, false);
}

void LinkLanes::show(const std::vector<Event>& events)
{
    std::vector<Tick> now;
    const auto oldest = Clock::now() - span;
    for (auto event = events.rbegin(); event != events.rend() && event->at > oldest; ++event)
        if (event->stream.starts_with("frame "))
            now.push_back({ event->at, Lane::fromUnit });
        else if (event->stream.starts_with("sent "))
            now.push_back({ event->at, Lane::toUnit });
        else if (event->stream == "mcu link")
            now.push_back({ event->at, Lane::fault });
    if (now == ticks)
        return;
    ticks = std::move(now);
    repaint();
    constexpr int movesPerSecond = 10;
    startTimerHz(movesPerSecond);
}

void LinkLanes::markMoment(std::optional<Clock::time_point> moment)
{
    marked = moment;
    repaint();
}

void LinkLanes::timerCallback()
{
    if (ticks.empty())
        stopTimer();
    repaint();
}

void LinkLanes::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    constexpr int tickWidth = 4, tickHeight = 14;
    Look::plate(g, getLocalBounds(), colours.well, colours.edge);
    const auto now = Clock::now();
    const auto inside = getLocalBounds().reduced(6, 0);
    const auto xOf = [&](Clock::time_point at)
    {
        return inside.getRight() -
               static_cast<int>(inside.getWidth() * ((now - at) / std::chrono::duration<double>(span)));
    };
    for (const auto& tick : ticks)
    {
        const bool isFault = tick.lane == Lane::fault;
        const auto y = tick.lane == Lane::toUnit ? 7 : tick.lane == Lane::fromUnit ? getHeight() - 7 - tickHeight : 0;
        g.setColour(isFault ? colours.bad : tick.lane == Lane::toUnit ? colours.accent : colours.warning);
        g.fillRect(xOf(tick.at) - tickWidth / 2, y, isFault ? 2 : tickWidth, isFault ? getHeight() : tickHeight);
    }
    if (marked)
    {
        g.setColour(colours.ink);
        g.drawVerticalLine(xOf(*marked), 0.0f, static_cast<float>(getHeight()));
    }
}

LinkArea::LinkArea(Desk& deskToUse)
    : Area(deskToUse, "Link to the microcontroller")
    , well(desk, "x", { "mcu well" })
    , active(desk)
{
    addAndMakeVisible(active);
    addAndMakeVisible(lanes);
    for (const auto& fault : linkFaults())
    {
        faults.push_back(std::make_unique<LineButton>(desk, fault.label, ButtonLines { fault.line, {}, fault.more }));
        addAndMakeVisible(*faults.back());
    }
    well.setTitle("End all faults of the link");
    well.setTone(LineButton::Tone::alarm);
    addAndMakeVisible(well);
}

void LinkArea::show(const PanelState& state)
{
    lanes.show(*state.events);
    active.show(state.faults);
    const auto& mcu = state.mcu;
    repaintIfChanged(counters, std::to_string(mcu.received) + " in  " + std::to_string(mcu.sent) + " out  " +
                                   std::to_string(mcu.resent) + " resent  " + std::to_string(mcu.damaged) + " damaged");
}

void LinkArea::resized()
{
    auto area = content();
    lanes.setBounds(area.removeFromTop(lanesHeight));
    area.removeFromTop(countersHeight);
    auto row = area.removeFromTop(buttonHeight);
    active.setBounds(area.withTrimmedTop(gap));
    constexpr int wellWidth = 28;
    well.setBounds(row.removeFromRight(wellWidth));
    layOutRow(faults, Look::font(Look::bodySize), row.withTrimmedRight(gap));
}

void LinkArea::paint(juce::Graphics& g)
{
    Area::paint(g);
    const auto& colours = Look::of(*this).colours;
    auto row = content().withTrimmedTop(lanesHeight).withHeight(countersHeight).reduced(6, 0);
    g.setFont(Look::font(Look::smallSize));
    g.setColour(colours.dim);
    g.drawText(counters, row, juce::Justification::centredRight);
    g.setColour(colours.warning);
    g.drawText("from the unit", row.removeFromLeft(96), juce::Justification::centredLeft);
    g.setColour(colours.accent);
    g.drawText("to it", row, juce::Justification::centredLeft);
}

} // namespace BenchPanel
