#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/LineButton.h"

namespace BenchPanel
{

/** The volume knob: turned by the wheel, by dragging up and down, and by the arrow keys, a step of volume each. */
class VolumeKnob : public juce::Component, public juce::SettableTooltipClient
{
public:
    explicit VolumeKnob(Desk& deskToUse);

    /** 0 to 50; none when nobody knows. */
    void setVolume(std::optional<int> volumeToShow, bool muted);

private:
    Desk& desk;
    std::optional<int> volume;
    bool isMuted = false;
    int dragged = 0;          ///< steps since the mouse came down
    float wheelTurned = 0.0f; ///< of a step that is not complete

    void paint(juce::Graphics& g) override;
    void mouseDown(const juce::MouseEvent&) override { dragged = 0; }
    void mouseDrag(const juce::MouseEvent& event) override;
    void mouseWheelMove(const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel) override;
    bool keyPressed(const juce::KeyPress& key) override;
    void focusGained(FocusChangeType) override { repaint(); }
    void focusLost(FocusChangeType) override { repaint(); }
    void turn(int steps);
};

/** The knob and the twelve keys of the front panel. */
class FrontPanelArea : public Area
{
public:
    explicit FrontPanelArea(Desk& deskToUse);

    void show(const PanelState& state) override;
    /** The key with this number, from 0, as a click on it does. False when there is none. */
    bool press(std::size_t key);

    static constexpr std::size_t keyCount = 12;

private:
    VolumeKnob knob;
    std::vector<std::unique_ptr<LineButton>> keys;

    void resized() override;
    void paint(juce::Graphics& g) override;
};

} // namespace BenchPanel
