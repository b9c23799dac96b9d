#include "bench/panel/TopBar.h"

#include "bench/panel/Sentence.h"

namespace BenchPanel
{

namespace
{

const ConsoleLine replayLine = "replay recording.scenario";
const ButtonLines startRecording { "record recording.scenario" }, stopRecording { "record off" };

constexpr int nameWidth = 112, dotSize = 16, supplyWidth = 108, sentenceX = 240;

} // namespace

TopBar::TopBar(Desk& deskToUse)
    : Area(deskToUse, {})
    , power(desk, "Power", { "mcu power-off" })
    , restart(desk, "Restart",
              { "engine restart", {}, { "engine stop", "engine start", "engine kill", "bus restart" } })
    , pullPlug(desk, "Pull plug", { "power cut" })
    , record(desk, "Record", startRecording)
    , replay(desk, "Replay", { replayLine, {}, { replayLine + " 2x", replayLine + " 10x", replayLine + " 0.5x" } })
    , mark(desk, "Mark", { "mark" })
    , picture(desk, "Picture", { "picture screen" })
    , console(desk, "Console", { "what has been said, and the answers" })
{
    record.setShortcut("Ctrl+R");
    picture.setShortcut("Ctrl+P");
    console.setShortcut("Ctrl+O");
    console.pressed = [this] { desk.toggleConsole(); };
    for (auto* button : { &power, &restart, &pullPlug, &record, &replay, &mark, &picture, &console })
        addAndMakeVisible(button);
}

void TopBar::show(const PanelState& state)
{
    power.setLines({ state.panel.powered && state.engineRuns ? "mcu power-off" : "mcu power-on" });
    record.setLabel(state.said.recording ? "Stop" : "Record");
    record.setTone(state.said.recording ? LineButton::Tone::alarm : LineButton::Tone::plain);
    record.setLines(state.said.recording ? stopRecording : startRecording);
    repaintIfChanged(shown,
                     { state.panel.powered && state.engineRuns, state.engineRuns,
                       (state.panel.powered && state.engineRuns ? "on, " : "off, ") + voltsText(state.supply.volts),
                       stateSentence(state) });
}

void TopBar::resized()
{
    constexpr int height = 28, y = 6;
    auto right = getWidth() - 2 * Look::grid;
    for (auto [button, width] :
         { std::pair(&console, 72), std::pair(&picture, 72), std::pair(&mark, 56), std::pair(&replay, 72),
           std::pair(&record, 72), std::pair(&pullPlug, 84), std::pair(&restart, 72), std::pair(&power, 64) })
    {
        right -= width;
        button->setBounds(right, y, width, height);
        right -= Look::grid;
    }
}

void TopBar::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    g.fillAll(colours.bar);
    auto area = getLocalBounds().withTrimmedLeft(3 * Look::grid);
    g.setColour(colours.ink);
    g.setFont(Look::font(Look::titleSize, true));
    g.drawText("Head unit", area.removeFromLeft(nameWidth), juce::Justification::centredLeft);
    g.setColour(shown.on ? colours.good : shown.engineRuns ? colours.warning : colours.bad);
    g.fillEllipse(area.removeFromLeft(dotSize).withSizeKeepingCentre(dotSize, dotSize).toFloat());
    area.removeFromLeft(Look::grid);
    g.setColour(colours.ink);
    g.setFont(Look::font(Look::bodySize));
    g.drawText(shown.supply, area.removeFromLeft(supplyWidth), juce::Justification::centredLeft);
    g.setColour(colours.accent);
    g.drawFittedText(shown.sentence, area.withRight(power.getX() - 2 * Look::grid), juce::Justification::centredLeft,
                     1);
}

} // namespace BenchPanel
