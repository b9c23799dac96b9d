#include "bench/panel/AroundArea.h"

namespace BenchPanel
{

namespace
{

/** What the unit has told the microcontroller of a device. */
bool isPresent(const PanelState& state, std::uint8_t bit)
{
    const auto& status = state.mcu.deviceStatus;
    return status && status->size() > 1 && ((*status)[1] & bit) != 0;
}

constexpr std::uint8_t iPodBit = 0x02, phoneBit = 0x04, pandoraBit = 0x08, satelliteBit = 0x10;

/** A thing that is there or not, and the line for each way. */
struct Thing
{
    const char* label;
    bool (*isThere)(const PanelState& state); ///< null for what only happens
    const char* come;
    const char* go;
    std::vector<ConsoleLine> more;
};

const std::vector<Thing>& things()
{
    static const std::vector<Thing> all {
        { "USB 1",
          [](auto& state) { return state.usb[0]; },
          "usb in 1",
          "usb out 1",
          { "usb update 1", "usb bad-update 1" } },
        { "USB 2",
          [](auto& state) { return state.usb[1]; },
          "usb in 2",
          "usb out 2",
          { "usb update 2", "usb bad-update 2" } },
        { "iPod",
          [](auto& state) { return isPresent(state, iPodBit); },
          "ipod connect",
          "ipod disconnect",
          { "ipod connect analog", "ipod connect digital", "ipod restart" } },
        { "Pandora",
          [](auto& state) { return isPresent(state, pandoraBit); },
          "ipod pandora on",
          "ipod pandora off",
          { "bt pandora on", "bt pandora off" } },
        { "Phone",
          [](auto& state) { return isPresent(state, phoneBit); },
          "bt connect Skipper",
          "bt disconnect",
          { "bt paired", "bt audio", "bt setup", "bt signal 3", "bt battery 80" } },
        { "Satellite",
          [](auto& state) { return isPresent(state, satelliteBit); },
          "satellite in",
          "satellite out",
          { "satellite channel 7", "satellite favourite" } },
        { "Camera", [](auto& state) { return state.cameraSignal; }, "camera on", "camera off", {} },
        { "Reverse", [](auto& state) { return state.supply.trigger; }, "panel trigger on", "panel trigger off", {} },
        { "Boat lights",
          [](auto& state) { return state.supply.lights; },
          "lights on",
          "lights off",
          { "panel dimmer 0", "panel dimmer 5", "panel dimmer 11" } },
        { "Weather", [](auto& state) { return state.weatherAlert; }, "weather on", "weather off", {} },
        { "Ring", nullptr, "bt call Marina", nullptr, {} },
        { "Hang up", nullptr, "bt hang-up", nullptr, {} },
    };
    return all;
}

} // namespace

BatterySlider::BatterySlider(Desk& deskToUse)
    : juce::Component("Battery")
    , desk(deskToUse)
{
    setWantsKeyboardFocus(true);
    setTitle("Battery");
    setTooltip("battery VOLTS    drag, arrow keys");
}

void BatterySlider::setVolts(double voltsToShow)
{
    if (std::abs(volts - voltsToShow) < 0.01)
        return;
    volts = voltsToShow;
    repaint();
}

juce::Rectangle<int> BatterySlider::track() const
{
    constexpr int labelWidth = 62, valueWidth = 62, height = 8;
    return getLocalBounds()
        .withTrimmedLeft(labelWidth)
        .withTrimmedRight(valueWidth)
        .withSizeKeepingCentre(getWidth() - labelWidth - valueWidth, height);
}

void BatterySlider::say(double value)
{
    desk.run("battery " + juce::String(juce::jlimit(0.0, 25.2, value), 1));
}

void BatterySlider::mouseDrag(const juce::MouseEvent& event)
{
    const auto area = track();
    const auto share = static_cast<double>(event.x - area.getX()) / area.getWidth();
    dragged = lowest + juce::jlimit(0.0, 1.0, share) * (highest - lowest);
    repaint();
}

void BatterySlider::mouseUp(const juce::MouseEvent&)
{
    if (!dragged)
        return;
    say(*dragged);
    dragged.reset();
    repaint();
}

bool BatterySlider::keyPressed(const juce::KeyPress& key)
{
    constexpr double step = 0.1;
    const bool up = key == juce::KeyPress::upKey || key == juce::KeyPress::rightKey;
    if (!up && key != juce::KeyPress::downKey && key != juce::KeyPress::leftKey)
        return false;
    say(volts + (up ? step : -step));
    return true;
}

void BatterySlider::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    const auto area = track();
    const auto xOf = [&](double value)
    {
        const auto share = (juce::jlimit(lowest, highest, value) - lowest) / (highest - lowest);
        return area.getX() + static_cast<int>(share * area.getWidth());
    };
    const auto value = dragged.value_or(volts);
    const bool isLow = value < lowBattery;
    g.setFont(Look::font(Look::bodySize));
    g.setColour(colours.ink);
    g.drawText("Battery", getLocalBounds(), juce::Justification::centredLeft);
    g.setColour(isLow ? colours.bad : colours.ink);
    g.drawText(juce::String(value, 1) + " V", getLocalBounds(), juce::Justification::centredRight);
    Look::plate(g, area, colours.button, colours.buttonEdge);
    constexpr int markHeight = 18, thumbWidth = 12, thumbHeight = 20;
    g.setColour(colours.warning);
    g.fillRect(juce::Rectangle<int>(2, markHeight).withCentre({ xOf(lowBattery), area.getCentreY() }));
    Look::plate(g, juce::Rectangle<int>(thumbWidth, thumbHeight).withCentre({ xOf(value), area.getCentreY() }),
                isLow ? colours.bad : colours.accent, hasKeyboardFocus(false) ? colours.ink : colours.edge);
}

AroundArea::AroundArea(Desk& deskToUse)
    : Area(deskToUse, "Plugged in and around")
    , battery(desk)
{
    for (const auto& thing : things())
    {
        buttons.push_back(std::make_unique<LineButton>(desk, thing.label, ButtonLines { thing.come, {}, thing.more }));
        addAndMakeVisible(*buttons.back());
    }
    addAndMakeVisible(battery);
}

void AroundArea::show(const PanelState& state)
{
    for (std::size_t i = 0; i < buttons.size(); ++i)
    {
        const auto& thing = things()[i];
        if (thing.isThere == nullptr)
            continue;
        const bool isThere = thing.isThere(state);
        buttons[i]->setTone(isThere ? LineButton::Tone::lit : LineButton::Tone::plain);
        buttons[i]->setLines({ isThere ? thing.go : thing.come, {}, thing.more });
    }
    battery.setVolts(state.supply.volts);
}

void AroundArea::resized()
{
    constexpr int perRow = 5, height = 28, rowStep = 31, gap = 4, batteryColumn = 2;
    const auto step = (getWidth() + gap) / perRow;
    const auto cell = [&](int column, int row)
    { return juce::Rectangle<int>(column * step, content().getY() + row * rowStep, step - gap, height); };
    for (std::size_t i = 0; i < buttons.size(); ++i)
        buttons[i]->setBounds(cell(static_cast<int>(i) % perRow, static_cast<int>(i) / perRow));
    battery.setBounds(cell(batteryColumn, 2).withRight(getWidth()).withTrimmedLeft(2 * Look::grid));
}

} // namespace BenchPanel
