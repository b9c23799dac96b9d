#include "bench/panel/SoundPane.h"

#include "bench/panel/RequestWords.h"
#include "ctl/Fields.h"

#include <algorithm>
#include <cmath>

namespace BenchPanel
{

namespace
{

constexpr double lowestHz = 20, highestHz = 20'000;
constexpr double mostDb = 15, dbPerLine = 6; ///< of the curves, both ways
constexpr double softest = -60, loudest = 6; ///< dB, of the meters
constexpr int labelHeight = 18;

juce::String hzText(double hz)
{
    return hz < 1000 ? juce::String(juce::roundToInt(hz)) + " Hz"
                     : juce::String(hz / 1000, hz < 10'000 ? 1 : 0) + " kHz";
}

juce::String dbText(double db)
{
    return std::isfinite(db) ? (db > 0 ? "+" : "") + juce::String(db, 1) + " dB" : juce::String("silent");
}

/** Why nothing is heard; "" when something is. */
juce::String silenceText(const PanelState& state)
{
    if (!Bench::isRunning(state.dsp))
        return "does not run";
    if (!Bench::isMuted(state.dsp))
        return {};
    const auto reasons = Ctl::Fields(state.engine->state)["muteReasons"];
    return reasons.empty() ? "muted" : juce::String::fromUTF8(withTitles(reasons).c_str());
}

} // namespace

double WayOut::hzOf(double point)
{
    return lowestHz * std::pow(highestHz / lowestHz, point / (points - 1));
}

WaysOut waysOut(const Bench::DspMemory& memory)
{
    struct Kind
    {
        const char *name, *outputs; ///< what their names begin with
    };
    constexpr std::array<Kind, std::tuple_size_v<WaysOut>> kinds {
        { { "front", "front " }, { "rear", "rear " }, { "line", "line " }, { "sub", "subwoofer" } }
    };
    const auto outputs = Bench::outputsOf(memory);
    WaysOut ways;
    for (std::size_t i = 0; i < ways.size(); ++i)
    {
        auto& way = ways[i];
        way.name = kinds[i].name;
        const auto isOfKind = [&](const Bench::DspOutput& output) { return output.name.starts_with(kinds[i].outputs); };
        // All of a kind have the same filters.
        const auto& filters = std::ranges::find_if(outputs, isOfKind)->filters;
        for (int point = 0; point < WayOut::points; ++point)
        {
            double gain = 1;
            for (const auto& filter : filters)
                gain *= Bench::magnitude(filter, WayOut::hzOf(point));
            way.curve[static_cast<std::size_t>(point)] = static_cast<float>(Bench::decibels(gain));
        }
        const auto peak = *std::ranges::max_element(way.curve);
        for (const auto& output : outputs)
            if (isOfKind(output))
                way.level = std::max(way.level, Bench::decibels(std::abs(output.fromLeft + output.fromRight)) + peak);
    }
    return ways;
}

DspCurves::DspCurves(Desk& deskToUse)
    : juce::Component("Curves")
    , desk(deskToUse)
{
    setTitle("Curve of the DSP");
    setTooltip("dsp plot");
    setWantsKeyboardFocus(true);
}

void DspCurves::show(const WaysOut& waysToShow, const juce::String& remarkToShow)
{
    if (ways == waysToShow && remark == remarkToShow)
        return;
    ways = waysToShow;
    remark = remarkToShow;
    setDescription(remark);
    repaint();
}

juce::Rectangle<float> DspCurves::well() const
{
    return getLocalBounds().withTrimmedBottom(axisHeight).toFloat();
}

float DspCurves::xOf(double hz) const
{
    const auto area = well();
    return area.getX() + area.getWidth() * static_cast<float>(std::log(hz / lowestHz) / std::log(highestHz / lowestHz));
}

float DspCurves::yOf(double db) const
{
    // What is far outside is as good as minus infinity.
    return well().getCentreY() - well().getHeight() / 2 * static_cast<float>(std::clamp(db / mostDb, -2.0, 2.0));
}

void DspCurves::mouseMove(const juce::MouseEvent& event)
{
    const auto share = juce::jlimit(0.0f, 1.0f, static_cast<float>(event.x) / static_cast<float>(getWidth()));
    pointed = share * (WayOut::points - 1);
    repaint();
}

void DspCurves::mouseExit(const juce::MouseEvent&)
{
    pointed.reset();
    repaint();
}

void DspCurves::mouseUp(const juce::MouseEvent& event)
{
    if (contains(event.getPosition()))
        desk.run(getTooltip());
}

bool DspCurves::keyPressed(const juce::KeyPress& key)
{
    if (key != juce::KeyPress::returnKey && key != juce::KeyPress::spaceKey)
        return false;
    desk.run(getTooltip());
    return true;
}

void DspCurves::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    Look::plate(g, well().toNearestInt(), colours.well, hasKeyboardFocus(false) ? colours.accent : colours.edge);
    paintScale(g);
    {
        const juce::Graphics::ScopedSaveState state(g);
        g.reduceClipRegion(well().reduced(1).toNearestInt());
        // The first is drawn last, over those that differ from it.
        for (auto way = ways.rbegin(); way != ways.rend(); ++way)
        {
            const bool isFirst = std::next(way) == ways.rend();
            g.setColour(isFirst ? (remark.isEmpty() ? colours.accent : colours.dim) : colours.dim.withAlpha(0.6f));
            if (isFirst || way->curve != ways.front().curve)
                paintCurve(g, *way);
        }
    }
    const auto inside = well().reduced(2 * Look::grid, Look::grid);
    g.setFont(Look::font(Look::smallSize));
    if (pointed)
    {
        g.setColour(colours.dim);
        const auto hz = WayOut::hzOf(*pointed);
        g.drawVerticalLine(juce::roundToInt(xOf(hz)), well().getY() + 1, well().getBottom() - 1);
        g.setColour(colours.ink);
        const auto db = ways.front().curve[static_cast<std::size_t>(juce::roundToInt(*pointed))];
        g.drawText(hzText(hz) + "  " + dbText(db), inside, juce::Justification::topRight);
    }
    g.setColour(colours.warning);
    g.drawText(remark, inside, juce::Justification::bottomLeft);
}

void DspCurves::paintScale(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    const auto area = well();
    for (auto db = -2 * dbPerLine; db <= 2 * dbPerLine; db += dbPerLine)
    {
        g.setColour(colours.edge.withAlpha(db == 0 ? 1.0f : 0.5f));
        g.drawHorizontalLine(juce::roundToInt(yOf(db)), area.getX() + 1, area.getRight() - 1);
    }
    g.setFont(Look::font(Look::smallSize));
    constexpr int textWidth = 60;
    const auto row = getLocalBounds().removeFromBottom(axisHeight);
    for (const auto hz : { 100.0, 1000.0, 10'000.0 })
    {
        const auto x = juce::roundToInt(xOf(hz));
        g.setColour(colours.edge.withAlpha(0.5f));
        g.drawVerticalLine(x, area.getY() + 1, area.getBottom() - 1);
        g.setColour(colours.dim);
        g.drawText(hz < 1000 ? "100 Hz" : juce::String(juce::roundToInt(hz / 1000)) + " kHz",
                   row.withX(x - textWidth / 2).withWidth(textWidth), juce::Justification::centred);
    }
}

void DspCurves::paintCurve(juce::Graphics& g, const WayOut& way)
{
    juce::Path path;
    for (int point = 0; point < WayOut::points; ++point)
    {
        const juce::Point<float> at(xOf(WayOut::hzOf(point)), yOf(way.curve[static_cast<std::size_t>(point)]));
        if (point == 0)
            path.startNewSubPath(at);
        else
            path.lineTo(at);
    }
    g.strokePath(path, juce::PathStrokeType(&way == &ways.front() ? 2.0f : 1.2f));
}

DspMeters::DspMeters()
    : juce::Component("Meters")
{
    setTitle("Level of the outputs");
}

void DspMeters::show(const WaysOut& ways)
{
    std::vector<Meter> now;
    for (const auto& way : ways)
        now.push_back({ way.name, way.level });
    if (now == meters)
        return;
    meters = std::move(now);
    repaint();
}

juce::String DspMeters::getTooltip()
{
    juce::StringArray texts;
    for (const auto& [name, level] : meters)
        texts.add(juce::String(name) + " " + dbText(level));
    return texts.joinIntoString("    ");
}

void DspMeters::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    constexpr int thickness = 16;
    auto left = getLocalBounds();
    g.setFont(Look::font(Look::smallSize));
    for (std::size_t i = 0; i < meters.size(); ++i)
    {
        const auto& [name, level] = meters[i];
        auto column = left.removeFromLeft(left.getWidth() / static_cast<int>(meters.size() - i));
        g.setColour(colours.dim);
        g.drawFittedText(name, column.removeFromBottom(labelHeight), juce::Justification::centred, 1);
        const auto tube = column.withSizeKeepingCentre(thickness, column.getHeight());
        Look::plate(g, tube, colours.well, colours.edge);
        const auto heightOf = [&](double db)
        { return (tube.getHeight() - 4) * (std::clamp(db, softest, loudest) - softest) / (loudest - softest); };
        auto inside = tube.reduced(2);
        const auto zero = inside.getBottom() - juce::roundToInt(heightOf(0));
        g.setColour(level > 0 ? colours.warning : colours.good);
        g.fillRoundedRectangle(inside.removeFromBottom(juce::roundToInt(heightOf(level))).toFloat(), 3.0f);
        g.setColour(colours.dim);
        g.drawHorizontalLine(zero, static_cast<float>(tube.getX()), static_cast<float>(tube.getRight()));
    }
}

SoundPane::SoundPane(Desk& deskToUse)
    : Area(deskToUse, "Sound")
    , ways(waysOut(memory))
    , curves(deskToUse)
    , mute(deskToUse, "Mute",
           { "mfd mute 1",
             {},
             { "why silent", "dsp", "dsp fail gone", "dsp fail crc always", "dsp fail slow 100ms", "dsp fail well" } })
{
    addAndMakeVisible(curves);
    addAndMakeVisible(meters);
    addAndMakeVisible(mute);
}

void SoundPane::show(const PanelState& state)
{
    if (state.dsp != memory)
    {
        memory = state.dsp;
        ways = waysOut(memory);
    }
    curves.show(ways, silenceText(state));
    meters.show(ways);
    mute.setTone(Bench::isMuted(memory) ? LineButton::Tone::alarm : LineButton::Tone::plain);
}

void SoundPane::resized()
{
    constexpr int muteWidth = 64, metersWidth = 140, margin = 3 * Look::grid, below = Look::grid;
    mute.setBounds(getLocalBounds().removeFromTop(Look::headingHeight).removeFromRight(muteWidth).withTrimmedBottom(1));
    auto area = content().withTrimmedTop(margin).withTrimmedBottom(below).withTrimmedLeft(margin);
    meters.setBounds(area.removeFromRight(metersWidth));
    area.removeFromRight(margin);
    curves.setBounds(area);
}

} // namespace BenchPanel
