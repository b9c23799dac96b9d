#include "bench/panel/NetworkPane.h"

#include <algorithm>

namespace BenchPanel
{

namespace
{

constexpr int rowHeight = 26, rowStep = 30, gap = Look::grid;
constexpr double percentOfStep = 2;

} // namespace

ZoneRow::ZoneRow(Desk& deskToUse, int zoneNumber)
    : juce::Component("Zone " + juce::String(zoneNumber))
    , number(zoneNumber)
    , volume(deskToUse, getName(), { 0, 100, percentOfStep, 0, " %" }, "mfd volume " + juce::String(number))
    , mute(deskToUse, "Mute", { "mfd mute " + juce::String(number) })
    , down(deskToUse, "-", { "mfd step " + juce::String(number) + " down" })
    , up(deskToUse, "+", { "mfd step " + juce::String(number) + " up" })
{
    volume.setTitle(getName() + " volume");
    mute.setTitle(getName() + " mute");
    down.setTitle(getName() + " down");
    up.setTitle(getName() + " up");
    for (auto* each : { static_cast<juce::Component*>(&volume), static_cast<juce::Component*>(&mute),
                        static_cast<juce::Component*>(&down), static_cast<juce::Component*>(&up) })
        addAndMakeVisible(each);
}

void ZoneRow::show(const NetworkDisplay::State& network)
{
    const auto found = network.zones.find(number);
    const auto zone = found == network.zones.end() ? NetworkDisplay::Zone() : found->second;
    volume.setValue(zone.volume);
    mute.setTone(zone.muted.value_or(false) ? LineButton::Tone::alarm : LineButton::Tone::plain);
}

void ZoneRow::resized()
{
    constexpr int muteWidth = 64, stepWidth = 28;
    auto area = getLocalBounds();
    up.setBounds(area.removeFromRight(stepWidth));
    down.setBounds(area.removeFromRight(stepWidth + gap).withTrimmedRight(gap));
    mute.setBounds(area.removeFromRight(muteWidth + gap).withTrimmedRight(gap));
    volume.setBounds(area.withTrimmedRight(2 * gap));
}

NetworkPane::AnswerLine::AnswerLine(Desk& deskToUse)
    : QuietButton(deskToUse, {})
{
}

void NetworkPane::AnswerLine::show(const NetworkDisplay::State& network)
{
    const bool knowsVolumes =
        std::ranges::any_of(network.zones, [](const auto& each) { return each.second.volume.has_value(); });
    isRefusal = network.lastAnswer.starts_with("refused");
    setLabel(!network.lastAnswer.empty() ? juce::String(network.lastAnswer)
             : knowsVolumes              ? "nothing was answered yet"
                                         : "no volume was told yet: a click asks for them");
    setLines({ knowsVolumes ? "mfd state" : "mfd request volumes",
               {},
               { "mfd request zones", "mfd request volumes", "mfd request configuration 1", "mfd request parameters 1",
                 "mfd phone", "mfd flood 50 3s" } });
}

void NetworkPane::AnswerLine::paintWords(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    g.setColour(isRefusal ? colours.warning : colours.dim);
    g.setFont(Look::font(Look::smallSize));
    g.drawText(getName(), getLocalBounds().reduced(gap, 0), juce::Justification::centredLeft);
}

NetworkPane::NetworkPane(Desk& deskToUse)
    : Area(deskToUse, "Display on the network")
    , zone1(desk, 1)
    , zone2(desk, 2)
    , answer(desk)
{
    for (auto* each : { static_cast<juce::Component*>(&zone1), static_cast<juce::Component*>(&zone2),
                        static_cast<juce::Component*>(&answer) })
        addAndMakeVisible(each);
}

void NetworkPane::show(const PanelState& state)
{
    zone1.show(state.network);
    zone2.show(state.network);
    answer.show(state.network);
}

void NetworkPane::resized()
{
    const auto area = content();
    zone1.setBounds(area.withHeight(rowHeight));
    zone2.setBounds(area.withTrimmedTop(rowStep).withHeight(rowHeight));
    answer.setBounds(area.withTrimmedTop(2 * rowStep).reduced(-gap, 0).withHeight(5 * Look::grid));
}

} // namespace BenchPanel
