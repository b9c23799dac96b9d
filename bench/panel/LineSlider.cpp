#include "bench/panel/LineSlider.h"

namespace BenchPanel
{

LineSlider::LineSlider(Desk& deskToUse, const juce::String& name, const Scale& scaleToUse, ConsoleLine beginning)
    : juce::Component(name)
    , desk(deskToUse)
    , scale(scaleToUse)
    , lineBeginning(std::move(beginning))
{
    setWantsKeyboardFocus(true);
    setTitle(name);
    setTooltip(lineBeginning + " " + text(scale.lowest) + "..." + text(scale.highest) + "    drag, wheel, arrow keys");
}

void LineSlider::setValue(std::optional<double> valueToShow)
{
    if (wanted && valueToShow && isTimerRunning() && std::abs(*valueToShow - *wanted) < scale.step)
        timerCallback();
    if (std::exchange(value, valueToShow) != valueToShow)
        repaint();
}

void LineSlider::timerCallback()
{
    stopTimer();
    wanted.reset();
    repaint();
}

void LineSlider::want(double number)
{
    constexpr int patienceMs = 1000;
    wanted = juce::jlimit(scale.lowest, scale.highest, number);
    desk.run(lineBeginning + " " + text(*wanted));
    startTimer(patienceMs);
    repaint();
}

void LineSlider::step(bool up)
{
    want(shown() + (up ? scale.step : -scale.step));
}

juce::Rectangle<int> LineSlider::track() const
{
    constexpr int gap = 3 * Look::grid, height = 8;
    const auto font = Look::font(Look::bodySize);
    const auto between = getLocalBounds()
                             .withTrimmedLeft(font.getStringWidth(getName()) + gap)
                             .withTrimmedRight(font.getStringWidth(text(scale.highest) + scale.unit) + gap);
    return between.withSizeKeepingCentre(between.getWidth(), height);
}

void LineSlider::mouseDrag(const juce::MouseEvent& event)
{
    if (event.mods.isPopupMenu())
        return;
    const auto area = track();
    const auto share = static_cast<double>(event.x - area.getX()) / area.getWidth();
    stopTimer();
    wanted = scale.lowest + juce::jlimit(0.0, 1.0, share) * (scale.highest - scale.lowest);
    repaint();
}

void LineSlider::mouseUp(const juce::MouseEvent&)
{
    if (wanted && !isTimerRunning())
        want(*wanted);
}

void LineSlider::mouseWheelMove(const juce::MouseEvent&, const juce::MouseWheelDetails& wheel)
{
    // A notch of a wheel comes as a fifth or so; a touchpad sends less, and more often.
    constexpr float notch = 0.15f;
    wheelTurned += wheel.deltaY;
    if (std::abs(wheelTurned) >= notch)
        step(std::exchange(wheelTurned, 0.0f) > 0);
}

bool LineSlider::keyPressed(const juce::KeyPress& key)
{
    const bool up = key == juce::KeyPress::upKey || key == juce::KeyPress::rightKey;
    if (!up && key != juce::KeyPress::downKey && key != juce::KeyPress::leftKey)
        return false;
    step(up);
    return true;
}

void LineSlider::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    const auto area = track();
    const auto xOf = [&](double number)
    {
        const auto share =
            (juce::jlimit(scale.lowest, scale.highest, number) - scale.lowest) / (scale.highest - scale.lowest);
        return area.getX() + static_cast<int>(share * area.getWidth());
    };
    const bool isKnown = value || wanted, isLow = isKnown && scale.low && shown() < *scale.low;
    g.setFont(Look::font(Look::bodySize));
    g.setColour(colours.ink);
    g.drawText(getName(), getLocalBounds(), juce::Justification::centredLeft);
    g.setColour(isLow ? colours.bad : isKnown ? colours.ink : colours.dim);
    g.drawText(isKnown ? text(shown()) + scale.unit : "-", getLocalBounds(), juce::Justification::centredRight);
    Look::plate(g, area, colours.button, hasKeyboardFocus(false) ? colours.accent : colours.buttonEdge);
    constexpr int markHeight = 18, thumbWidth = 12, thumbHeight = 20;
    const auto place = [&](int width, int height, double number) {
        return juce::Rectangle<int>(width, height).withCentre({ xOf(number), area.getCentreY() });
    };
    if (scale.low)
    {
        g.setColour(colours.warning);
        g.fillRect(place(2, markHeight, *scale.low));
    }
    if (isKnown)
        Look::plate(g, place(thumbWidth, thumbHeight, shown()), isLow ? colours.bad : colours.accent,
                    hasKeyboardFocus(false) ? colours.ink : colours.edge);
}

} // namespace BenchPanel
