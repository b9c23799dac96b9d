#pragma once

#include "bench/dsp/DspModel.h"
#include "bench/panel/Area.h"
#include "bench/panel/LineButton.h"

namespace BenchPanel
{

/** What reaches the outputs of one kind. */
struct WayOut
{
    static constexpr int points = 96;

    const char* name = "";
    std::array<float, points> curve {};                      ///< dB of its filters, at `hzOf` each point
    double level = -std::numeric_limits<double>::infinity(); ///< dB where it is loudest, with every gain

    /** 20 Hz to 20 kHz, evenly on a logarithmic scale. */
    static double hzOf(double point);
    bool operator==(const WayOut&) const = default;
};

/** Front, rear, line and subwoofer. */
using WaysOut = std::array<WayOut, 4>;
/** Any thread. */
WaysOut waysOut(const Bench::DspMemory& memory);

/** What the filters on the way to the outputs do to sound. A click draws the large picture. Message thread. */
class DspCurves : public juce::Component, public juce::SettableTooltipClient
{
public:
    explicit DspCurves(Desk& deskToUse);

    /** `remark` says why nothing is heard, "" when something is. */
    void show(const WaysOut& waysToShow, const juce::String& remarkToShow);

    static constexpr int axisHeight = 18;

private:
    Desk& desk;
    WaysOut ways;
    juce::String remark;
    std::optional<float> pointed; ///< the point of the curve that the mouse is at

    juce::Rectangle<float> well() const;
    float xOf(double hz) const;
    float yOf(double db) const;
    void paint(juce::Graphics& g) override;
    void paintScale(juce::Graphics& g);
    void paintCurve(juce::Graphics& g, const WayOut& way);
    void mouseMove(const juce::MouseEvent& event) override;
    void mouseExit(const juce::MouseEvent&) override;
    void mouseUp(const juce::MouseEvent& event) override;
    bool keyPressed(const juce::KeyPress& key) override;
    void focusGained(FocusChangeType) override { repaint(); }
    void focusLost(FocusChangeType) override { repaint(); }
};

/** How loud the outputs are, -60 to +6 dB. Message thread. */
class DspMeters : public juce::Component, public juce::TooltipClient
{
public:
    DspMeters();

    void show(const WaysOut& ways);
    juce::String getTooltip() override;

private:
    struct Meter
    {
        const char* name = "";
        double level = 0; ///< dB
        bool operator==(const Meter&) const = default;
    };
    std::vector<Meter> meters;

    void paint(juce::Graphics& g) override;
};

/** What the DSP does to sound: its curve, the level of the outputs, mute. */
class SoundPane : public Area
{
public:
    explicit SoundPane(Desk& deskToUse);

    void show(const PanelState& state) override;

private:
    Bench::DspMemory memory; ///< of what is shown
    WaysOut ways;
    DspCurves curves;
    DspMeters meters;
    LineButton mute;

    void resized() override;
};

} // namespace BenchPanel
