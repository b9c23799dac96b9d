#include "bench/panel/FrontPanelArea.h"

#include "ctl/Fields.h"

namespace BenchPanel
{

namespace
{

constexpr int loudest = 50;

/** What the words of the panel's keys say to the console. The setup page has no key of its own: it is asked for. */
struct FrontKey
{
    const char* label;
    const char* name;      ///< in "mcu key NAME"; null where the line is another
    const char* longPress; ///< a name, too; null where a long press is the key again and again
};
constexpr std::array<FrontKey, FrontPanelArea::keyCount> frontKeys { {
    { "Source", "source", nullptr },
    { "Menu", "menu", nullptr },
    { "AM/FM", "amfm", nullptr },
    { "Play", "playpause", "playpause-long" },
    { "Previous", "pre", "pre-long" },
    { "Next", "next", "next-long" },
    { "Favourites", "favorites", nullptr },
    { "Camera", "camera", nullptr },
    { "Return", "return", nullptr },
    { "Enter", "enter", nullptr },
    { "Setup", nullptr, nullptr },
    { "Power", "power", nullptr },
} };

ButtonLines linesOf(const FrontKey& key)
{
    if (key.name == nullptr)
        return { "menu setup" };
    const juce::String name(key.name);
    const auto hold = "mcu hold " + name + " 2s";
    const auto longPress = key.longPress != nullptr ? "mcu key " + juce::String(key.longPress) : hold;
    return { "mcu key " + name, longPress, { hold, "mcu hold " + name + " 5s", "mcu flood " + name + " 50 3s" } };
}

} // namespace

VolumeKnob::VolumeKnob(Desk& deskToUse)
    : juce::Component("Volume")
    , desk(deskToUse)
{
    setWantsKeyboardFocus(true);
    setTitle("Volume");
    setTooltip("mcu key volume-up\nmcu key volume-down\nwheel, drag, arrow keys");
}

void VolumeKnob::setVolume(std::optional<int> volumeToShow, bool muted)
{
    if (volumeToShow == volume && muted == isMuted)
        return;
    volume = volumeToShow;
    isMuted = muted;
    repaint();
}

void VolumeKnob::turn(int steps)
{
    for (; steps > 0; --steps)
        desk.run("mcu key volume-up");
    for (; steps < 0; ++steps)
        desk.run("mcu key volume-down");
}

void VolumeKnob::mouseDrag(const juce::MouseEvent& event)
{
    constexpr int pointsOfStep = 8;
    const auto steps = (event.getDistanceFromDragStartX() - event.getDistanceFromDragStartY()) / pointsOfStep;
    turn(steps - std::exchange(dragged, steps));
}

void VolumeKnob::mouseWheelMove(const juce::MouseEvent&, const juce::MouseWheelDetails& wheel)
{
    // A notch of a wheel comes as a fifth or so; a touchpad sends less, and more often.
    constexpr float notch = 0.15f;
    wheelTurned += wheel.deltaY;
    if (std::abs(wheelTurned) < notch)
        return;
    turn(wheelTurned > 0 ? 1 : -1);
    wheelTurned = 0;
}

bool VolumeKnob::keyPressed(const juce::KeyPress& key)
{
    const bool up = key == juce::KeyPress::upKey || key == juce::KeyPress::rightKey;
    if (!up && key != juce::KeyPress::downKey && key != juce::KeyPress::leftKey)
        return false;
    turn(up ? 1 : -1);
    return true;
}

void VolumeKnob::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    constexpr float pi = juce::MathConstants<float>::pi;
    constexpr float from = -0.75f * pi, to = 0.75f * pi, width = 5.0f;
    const auto circle = getLocalBounds().toFloat().reduced(3.0f);
    g.setColour(colours.button);
    g.fillEllipse(circle);
    g.setColour(hasKeyboardFocus(false) ? colours.accent : colours.buttonEdge);
    g.drawEllipse(circle, 1.0f);
    const auto arc = [&](float end, juce::Colour colour)
    {
        juce::Path path;
        path.addCentredArc(circle.getCentreX(), circle.getCentreY(), circle.getWidth() / 2 - 8,
                           circle.getWidth() / 2 - 8, 0.0f, from, end, true);
        g.setColour(colour);
        g.strokePath(path, { width, juce::PathStrokeType::curved, juce::PathStrokeType::rounded });
    };
    arc(to, colours.edge);
    if (volume)
        arc(from + (to - from) * static_cast<float>(*volume) / loudest, isMuted ? colours.warning : colours.accent);
    auto text = getLocalBounds().withSizeKeepingCentre(getWidth(), 44);
    g.setColour(colours.dim);
    g.setFont(Look::font(Look::smallSize));
    g.drawText(isMuted ? "muted" : "Volume", text.removeFromTop(18), juce::Justification::centred);
    g.setColour(colours.ink);
    g.setFont(Look::font(Look::largeSize, true));
    g.drawText(volume ? juce::String(*volume) : "-", text, juce::Justification::centred);
}

FrontPanelArea::FrontPanelArea(Desk& deskToUse)
    : Area(deskToUse, "Front panel")
    , knob(desk)
{
    addAndMakeVisible(knob);
    for (const auto& key : frontKeys)
    {
        auto& button = *keys.emplace_back(std::make_unique<LineButton>(desk, key.label, linesOf(key)));
        button.setShortcut("F" + juce::String(keys.size()));
        addAndMakeVisible(button);
    }
}

bool FrontPanelArea::press(std::size_t key)
{
    if (key >= keys.size())
        return false;
    keys[key]->press();
    return true;
}

void FrontPanelArea::show(const PanelState& state)
{
    const Ctl::Fields told(state.engine->state);
    const auto volume = told.number("volume1");
    knob.setVolume(volume ? std::optional(static_cast<int>(*volume)) : std::nullopt, told.is("muted"));
}

void FrontPanelArea::resized()
{
    constexpr int knobSize = 100, keysX = 114, perRow = 4, keyHeight = 30, rowStep = 33, gap = 3;
    knob.setBounds(content().withSize(knobSize, knobSize));
    const auto step = (getWidth() - keysX + gap) / perRow;
    for (std::size_t i = 0; i < keys.size(); ++i)
        keys[i]->setBounds(keysX + static_cast<int>(i) % perRow * step,
                           content().getY() + static_cast<int>(i) / perRow * rowStep, step - gap, keyHeight);
}

void FrontPanelArea::paint(juce::Graphics& g)
{
    Area::paint(g);
    g.setColour(Look::of(*this).colours.dim);
    g.setFont(Look::font(Look::smallSize));
    g.drawText("hold the mouse: long press     right click: hold, flood",
               getLocalBounds().removeFromBottom(16).withTrimmedLeft(114), juce::Justification::centredLeft);
}

} // namespace BenchPanel
