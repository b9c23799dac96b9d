#include "bench/panel/ConsoleSheet.h"

namespace BenchPanel
{

ConsoleSheet::ConsoleSheet(Desk& deskToUse)
    : Area(deskToUse, "Console")
{
    text.setMultiLine(true, true);
    text.setReadOnly(true);
    text.setCaretVisible(false);
    text.setTitle("What the console has said");
    addAndMakeVisible(text);
}

void ConsoleSheet::show(const PanelState& state)
{
    if (state.ended.empty())
        return;
    constexpr int mostCharacters = 40'000;
    auto all = text.getText();
    for (const auto& said : state.ended)
    {
        all << "> " << juce::String::fromUTF8(said.line.c_str()) << "\n"
            << juce::String::fromUTF8(said.answer.c_str()).trimEnd() << "\n";
        const auto end = said.answer.find('\n');
        if (end != std::string::npos && end + 1 < said.answer.size())
            setVisible(true);
    }
    if (all.length() > mostCharacters)
        all = all.substring(all.length() - mostCharacters);
    text.setText(all, false);
    text.moveCaretToEnd();
}

void ConsoleSheet::visibilityChanged()
{
    if (isVisible())
        toFront(false);
}

void ConsoleSheet::lookAndFeelChanged()
{
    text.applyFontToAllText(juce::Font("DejaVu Sans Mono", Look::smallSize + 1.0f, juce::Font::plain));
    text.applyColourToAllText(Look::of(*this).colours.ink);
}

void ConsoleSheet::resized()
{
    text.setBounds(content().reduced(2 * Look::grid, Look::grid));
}

void ConsoleSheet::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    Look::plate(g, getLocalBounds(), colours.plate, colours.accent);
    auto heading = getLocalBounds().removeFromTop(Look::headingHeight).reduced(2 * Look::grid, 0);
    g.setColour(colours.dim);
    g.setFont(Look::font(Look::smallSize, true));
    g.drawText(getName().toUpperCase(), heading, juce::Justification::centredLeft);
    g.setFont(Look::font(Look::smallSize));
    g.drawText("Escape puts it away", heading, juce::Justification::centredRight);
}

} // namespace BenchPanel
