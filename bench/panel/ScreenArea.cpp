#include "bench/panel/ScreenArea.h"

#include "ctl/Fields.h"

namespace BenchPanel
{

ScreenArea::ScreenArea(Desk& deskToUse, const std::string& display, const juce::String& otherwise)
    : Area(deskToUse, {})
    , instead(otherwise)
    , screen(display,
             [safe = juce::Component::SafePointer<juce::Component>(this)]
             {
                 juce::MessageManager::callAsync(
                     [safe]
                     {
                         if (safe != nullptr)
                             safe->repaint();
                     });
             })
{
    setTitle("The unit's screen");
    setOpaque(true);
}

void ScreenArea::show(const PanelState& state)
{
    repaintIfChanged(shown, { state.isOn(), Ctl::Fields(state.engine->state).is("muted") });
}

void ScreenArea::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    const auto picture = screen.picture();
    if (!shown.on || picture.isNull())
    {
        g.fillAll(colours.well.interpolatedWith(colours.dim, 0.25f));
        g.setColour(colours.dim);
        g.setFont(Look::font(Look::largeSize));
        g.drawText(shown.on ? instead : "off", getLocalBounds(), juce::Justification::centred);
        return;
    }
    g.drawImageAt(picture, 0, 0);
    if (shown.muted)
    {
        constexpr int thin = 2;
        g.setColour(colours.warning);
        g.drawRect(getLocalBounds(), thin);
    }
    if (finger)
    {
        constexpr float fingertip = 36.0f;
        g.setColour(colours.accent.withAlpha(0.35f));
        g.fillEllipse(juce::Rectangle<float>(fingertip, fingertip).withCentre(finger->toFloat()));
    }
}

void ScreenArea::mouseDown(const juce::MouseEvent& event)
{
    finger = event.getPosition();
    repaint();
}

void ScreenArea::mouseUp(const juce::MouseEvent& event)
{
    finger.reset();
    repaint();
    const auto at = getLocalBounds().getConstrainedPoint(event.getPosition());
    const auto x = juce::jmin(at.x, width - 1), y = juce::jmin(at.y, height - 1);
    desk.run("touch " + juce::String(x) + " " + juce::String(y));
}

} // namespace BenchPanel
