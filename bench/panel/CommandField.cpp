#include "bench/panel/CommandField.h"

#include "bench/console/Verb.h"

namespace BenchPanel
{

namespace
{

constexpr int editorHeight = 28, mostHistory = 1000;

} // namespace

CommandField::CommandField(Desk& deskToUse)
    : Area(deskToUse, {})
{
    editor.setTitle("Command");
    editor.addListener(this);
    editor.addKeyListener(this);
    editor.setSelectAllWhenFocused(true);
    addAndMakeVisible(editor);
}

CommandField::~CommandField()
{
    editor.removeKeyListener(this);
}

void CommandField::lookAndFeelChanged()
{
    editor.applyFontToAllText(juce::Font("DejaVu Sans Mono", Look::bodySize, juce::Font::plain));
    // The editor keeps the colour as its own, so that it cannot be asked for the new one.
    editor.applyColourToAllText(Look::of(*this).colours.ink);
    editor.setTextToShowWhenEmpty("> a command; help lists them", Look::of(*this).colours.dim);
}

void CommandField::show(const PanelState& state)
{
    const auto& said = state.said;
    auto answer = said.answer.substr(0, said.answer.find('\n'));
    if (said.running)
        answer = "... " + said.line + "    Escape ends the wait" +
                 (said.dropped == 0 ? "" : "    too many at once: " + std::to_string(said.dropped) + " dropped");
    repaintIfChanged(shown, { std::move(answer), said.running, said.failed });
}

void CommandField::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    g.setColour(shown.failed ? colours.bad : shown.running ? colours.warning : colours.dim);
    g.setFont(Look::font(Look::smallSize));
    constexpr int mostLines = 2;
    g.drawFittedText(juce::String::fromUTF8(shown.answer.c_str()).trim(),
                     getLocalBounds().withTrimmedBottom(editorHeight + 2), juce::Justification::bottomLeft, mostLines,
                     1.0f);
}

void CommandField::setLine(const ConsoleLine& line)
{
    if (history.isEmpty() || history[history.size() - 1] != line)
        history.add(line);
    history.removeRange(0, history.size() - mostHistory);
    inHistory = history.size();
    editor.setText(line, false);
}

void CommandField::propose(const ConsoleLine& beginning)
{
    editor.grabKeyboardFocus();
    editor.setText(beginning, false);
    editor.moveCaretToEnd();
}

void CommandField::resized()
{
    editor.setBounds(getLocalBounds().removeFromBottom(editorHeight));
}

void CommandField::textEditorReturnKeyPressed(juce::TextEditor&)
{
    const auto line = editor.getText().trim();
    if (line.isNotEmpty())
        desk.run(line);
    editor.selectAll();
}

void CommandField::textEditorEscapeKeyPressed(juce::TextEditor&)
{
    editor.clear();
    desk.cancel();
}

bool CommandField::keyPressed(const juce::KeyPress& key, juce::Component*)
{
    if (key == juce::KeyPress::upKey)
        recall(-1);
    else if (key == juce::KeyPress::downKey)
        recall(1);
    else if (key == juce::KeyPress::tabKey && editor.getText().isNotEmpty() && editor.getHighlightedRegion().isEmpty())
        complete();
    else
        return false;
    return true;
}

void CommandField::recall(int step)
{
    inHistory = juce::jlimit(0, history.size(), inHistory + step);
    editor.setText(history[inHistory], false);
    editor.moveCaretToEnd();
}

void CommandField::complete()
{
    const auto text = editor.getText();
    const auto begin = text.lastIndexOfChar(' ') + 1;
    const auto word = text.substring(begin);
    juce::StringArray fitting;
    for (const auto& candidate : Bench::completionsFor(Bench::parseLine(text.substring(0, begin).toStdString()).words))
        if (juce::String(candidate).startsWith(word))
            fitting.add(candidate);
    if (fitting.isEmpty())
        return;
    auto common = fitting[0];
    for (const auto& each : fitting)
        while (!each.startsWith(common))
            common = common.dropLastCharacters(1);
    editor.setText(text.substring(0, begin) + common + (fitting.size() == 1 ? " " : ""), false);
    editor.moveCaretToEnd();
}

} // namespace BenchPanel
