#pragma once

#include "bench/panel/Desk.h"
#include "bench/panel/Look.h"

namespace BenchPanel
{

/** What a button says. */
struct ButtonLines
{
    ConsoleLine click;
    ConsoleLine longPress {};         ///< "" when it means the same as a click
    std::vector<ConsoleLine> more {}; ///< of the menu

    bool operator==(const ButtonLines&) const = default;
};

/**
    A button that says a line to the console: a click, Return or the space bar says one, a long press may say another, the
    right mouse button (or the menu key) offers more. Its tooltip is the line. Message thread.
*/
class LineButton : public juce::Component, public juce::SettableTooltipClient, private juce::Timer
{
public:
    /** The desk must outlive it. */
    LineButton(Desk& deskToUse, const juce::String& label, ButtonLines linesToSay = {});

    void setLines(ButtonLines linesToSay);
    void setLabel(const juce::String& label);
    enum class Tone { plain, lit, alarm };
    /** Lit when what it stands for is there. */
    void setTone(Tone toneToShow);
    /** The key that does the same, for the tooltip: "F1". */
    void setShortcut(const juce::String& name);
    /** What else there is to know of it, for the tooltip and above the menu. */
    void setNote(const juce::String& noteToShow);

    /** In place of saying the line, which is its tooltip all the same. */
    std::function<void()> pressed;
    /** As a click does. */
    void press();

    static constexpr int longPressMs = 600;

protected:
    /** Within the whole of it. */
    virtual void paintWords(juce::Graphics& g);

private:
    Desk& desk;
    ButtonLines lines;
    Tone tone = Tone::plain;
    juce::String shortcut, note;
    bool down = false;

    void paint(juce::Graphics& g) override;
    void mouseEnter(const juce::MouseEvent&) override { repaint(); }
    void mouseExit(const juce::MouseEvent&) override { repaint(); }
    void mouseDown(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;
    bool keyPressed(const juce::KeyPress& key) override;
    void focusGained(FocusChangeType) override { repaint(); }
    void focusLost(FocusChangeType) override { repaint(); }
    void timerCallback() override;
    void offerMore();
    void describe();
};

} // namespace BenchPanel
