#include "bench/panel/RemoteArea.h"

namespace BenchPanel
{

namespace
{

struct RemoteKey
{
    const char* label;
    const char* name;
    const char* longPress; ///< a name, too, or null
};
constexpr std::array remoteKeys { RemoteKey { "Source", "source", nullptr },  RemoteKey { "Fav", "favorites", nullptr },
                                  RemoteKey { "Prev", "pre", "pre-long" },    RemoteKey { "Next", "next", "next-long" },
                                  RemoteKey { "Play", "playpause", nullptr }, RemoteKey { "Off", "off", nullptr } };

} // namespace

RemoteArea::RemoteArea(Desk& deskToUse)
    : Area(deskToUse, "Wired remote")
    , display(desk, {}, { "remote", {}, { "remote unplug", "remote plug", "remote stall", "remote stall off" } })
{
    addAndMakeVisible(display);
    for (const auto& key : remoteKeys)
    {
        const juce::String name(key.name);
        const auto hold = "remote hold " + name + " 2s";
        const auto longPress = key.longPress != nullptr ? "remote " + juce::String(key.longPress) : hold;
        keys.push_back(
            std::make_unique<LineButton>(desk, key.label, ButtonLines { "remote " + name, longPress, { hold } }));
        addAndMakeVisible(*keys.back());
    }
}

void RemoteArea::show(const PanelState& state)
{
    const auto& remote = state.remote;
    constexpr int full = 15;
    repaintIfChanged(shown, { remote.line(0), remote.line(1), state.isOn() ? remote.dimmerA().value_or(full) : 0,
                              state.remotePlugged });
}

void RemoteArea::resized()
{
    constexpr int displayWidth = 200, keysX = 206, perRow = 3, keyHeight = 25, rowStep = 27, gap = 4;
    display.setBounds(content().withWidth(displayWidth));
    const auto step = (getWidth() - keysX + gap) / perRow;
    for (std::size_t i = 0; i < keys.size(); ++i)
        keys[i]->setBounds(keysX + static_cast<int>(i) % perRow * step,
                           content().getY() + static_cast<int>(i) / perRow * rowStep, step - gap, keyHeight);
}

void RemoteArea::paintOverChildren(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    const juce::Colour glass(0xffbcd68c), darkGlass(0xff5d6b4a), ink(0xff1c2b10);
    constexpr float full = 15.0f;
    const auto area = display.getBounds();
    const auto light = shown.plugged ? static_cast<float>(shown.level) / full : 0.0f;
    Look::plate(g, area, darkGlass.interpolatedWith(glass, light),
                display.hasKeyboardFocus(false) ? colours.accent : colours.edge);
    auto text = area.reduced(2 * Look::grid, Look::grid);
    if (!shown.plugged)
    {
        g.setColour(glass);
        g.setFont(Look::font(Look::bodySize));
        g.drawText("unplugged", text, juce::Justification::centred);
        return;
    }
    g.setColour(ink);
    g.setFont(juce::Font("DejaVu Sans Mono", 18.0f, juce::Font::bold));
    g.drawText(shown.line1, text.removeFromTop(text.getHeight() / 2), juce::Justification::centredLeft, false);
    g.drawText(shown.line2, text, juce::Justification::centredLeft, false);
}

} // namespace BenchPanel
