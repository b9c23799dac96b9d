#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/LineButton.h"

namespace BenchPanel
{

/** The supply voltage as a slider, with a mark where the unit warns of a low battery. */
class BatterySlider : public juce::Component, public juce::SettableTooltipClient
{
public:
    explicit BatterySlider(Desk& deskToUse);

    /** 0 to 25.2; what lies outside the scale stands at its end. */
    void setVolts(double voltsToShow);

    static constexpr double lowest = 8.0, highest = 16.0, lowBattery = 10.5;

private:
    Desk& desk;
    double volts = 0;
    std::optional<double> dragged;

    void paint(juce::Graphics& g) override;
    void mouseDown(const juce::MouseEvent& event) override { mouseDrag(event); }
    void mouseDrag(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;
    bool keyPressed(const juce::KeyPress& key) override;
    void focusGained(FocusChangeType) override { repaint(); }
    void focusLost(FocusChangeType) override { repaint(); }
    juce::Rectangle<int> track() const;
    void say(double value);
};

/** What is plugged into the unit, and what the boat does. */
class AroundArea : public Area
{
public:
    explicit AroundArea(Desk& deskToUse);

    void show(const PanelState& state) override;

private:
    std::vector<std::unique_ptr<LineButton>> buttons;
    BatterySlider battery;

    void resized() override;
};

} // namespace BenchPanel
