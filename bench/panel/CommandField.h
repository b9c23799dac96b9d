#pragma once

#include "bench/panel/Area.h"

namespace BenchPanel
{

/**
    The console's input: shows the line that was said last, by whichever widget, with the first line of its answer above,
    and takes new ones. Up and down go through what has been said, Tab completes.
*/
class CommandField : public Area, private juce::TextEditor::Listener, private juce::KeyListener
{
public:
    explicit CommandField(Desk& deskToUse);
    ~CommandField() override;

    void show(const PanelState& state) override;
    /** A line that a widget says. */
    void setLine(const ConsoleLine& line);
    /** For the person to finish. */
    void propose(const ConsoleLine& beginning);

private:
    struct Shown
    {
        std::string answer;
        bool running = false, failed = false;
        bool operator==(const Shown&) const = default;
    };

    Shown shown;
    juce::TextEditor editor;
    juce::StringArray history;
    int inHistory = 0; ///< its size when none of it is shown

    void resized() override;
    void paint(juce::Graphics& g) override;
    void lookAndFeelChanged() override;
    void textEditorReturnKeyPressed(juce::TextEditor&) override;
    void textEditorEscapeKeyPressed(juce::TextEditor&) override;
    bool keyPressed(const juce::KeyPress& key, juce::Component* from) override;
    void recall(int step);
    void complete();
};

} // namespace BenchPanel
