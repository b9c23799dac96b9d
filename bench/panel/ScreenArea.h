#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/UnitScreen.h"

namespace BenchPanel
{

/** The unit's screen, point for point; the mouse is a finger on it. */
class ScreenArea : public Area
{
public:
    /** `display` is the unit's own, "" when it draws elsewhere or nowhere, which `otherwise` tells a person. */
    ScreenArea(Desk& deskToUse, const std::string& display, const juce::String& otherwise);

    void show(const PanelState& state) override;

    static constexpr int width = 800, height = 480;

private:
    struct Shown
    {
        bool on = true, muted = false;
        bool operator==(const Shown&) const = default;
    };

    const juce::String instead;
    Shown shown;
    std::optional<juce::Point<int>> finger;
    UnitScreen screen;

    void paint(juce::Graphics& g) override;
    void mouseDown(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;
};

} // namespace BenchPanel
