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

/** With a mark where the unit warns of a low battery. */
constexpr LineSlider::Scale supplyScale {
    .lowest = 8, .highest = 16, .step = 0.1, .decimals = 1, .unit = " V", .low = 10.5
};

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

AroundArea::AroundArea(Desk& deskToUse)
    : Area(deskToUse, "Plugged in and around")
    , battery(desk, "Battery", supplyScale, "battery")
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
    battery.setValue(state.supply.volts);
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
