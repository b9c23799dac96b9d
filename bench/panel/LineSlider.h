#pragma once

#include "bench/panel/Desk.h"
#include "bench/panel/Look.h"

namespace BenchPanel
{

/**
    A value of the unit with its name and number, which the mouse drags and wheel and arrow keys step. What is wanted is said
    to the console, and shown until the unit has it, or for a second. Message thread.
*/
class LineSlider : public juce::Component, public juce::SettableTooltipClient, private juce::Timer
{
public:
    struct Scale
    {
        double lowest, highest, step;
        int decimals;
        const char* unit;
        std::optional<double> low {}; ///< has a mark; what is below is alarming
    };

    /** `beginning`: of the line, whose end is the value. The desk must outlive it. */
    LineSlider(Desk& deskToUse, const juce::String& name, const Scale& scaleToUse, ConsoleLine beginning);

    /** What lies outside the scale stands at its end; none for what is not known. */
    void setValue(std::optional<double> valueToShow);

private:
    Desk& desk;
    const Scale scale;
    const ConsoleLine lineBeginning;
    std::optional<double> value;
    std::optional<double> wanted; ///< in place of it, for a while
    float wheelTurned = 0;

    double shown() const { return wanted.value_or(value.value_or(scale.lowest)); }
    juce::String text(double number) const { return juce::String(number, scale.decimals); }
    juce::Rectangle<int> track() const;
    void want(double number);
    void step(bool up);

    void paint(juce::Graphics& g) override;
    void mouseDown(const juce::MouseEvent& event) override { mouseDrag(event); }
    void mouseDrag(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;
    void mouseWheelMove(const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel) override;
    bool keyPressed(const juce::KeyPress& key) override;
    void focusGained(FocusChangeType) override { repaint(); }
    void focusLost(FocusChangeType) override { repaint(); }
    void timerCallback() override;
};

} // namespace BenchPanel
