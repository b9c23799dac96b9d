#include "bench/panel/Look.h"

namespace BenchPanel
{

namespace
{

constexpr int tooltipLine = 5 * Look::grid, tooltipMargin = Look::grid;

juce::Colour rgb(juce::uint32 value)
{
    return juce::Colour(0xff000000u | value);
}

} // namespace

const Look::Palette Look::night {
    .window = rgb(0x0f171e),
    .bar = rgb(0x17222c),
    .plate = rgb(0x141e27),
    .edge = rgb(0x2c3a47),
    .well = rgb(0x0a1117),
    .button = rgb(0x1f2d3a),
    .buttonEdge = rgb(0x354656),
    .ink = rgb(0xe8eff5),
    .dim = rgb(0x93a4b3),
    .accent = rgb(0x9cd2ff),
    .good = rgb(0x3ddc84),
    .warning = rgb(0xf2b65c),
    .bad = rgb(0xff8f85),
    .lit = rgb(0x1d6b47),
    .alarm = rgb(0x6a2529),
};

const Look::Palette Look::day {
    .window = rgb(0xe9eef2),
    .bar = rgb(0xdbe3ea),
    .plate = rgb(0xf8fafb),
    .edge = rgb(0xbfccd6),
    .well = rgb(0xffffff),
    .button = rgb(0xffffff),
    .buttonEdge = rgb(0xb3c1cd),
    .ink = rgb(0x14222d),
    .dim = rgb(0x526473),
    .accent = rgb(0x0b66a8),
    .good = rgb(0x0a7d43),
    .warning = rgb(0x9a5b00),
    .bad = rgb(0xb3261e),
    .lit = rgb(0xa8e4c3),
    .alarm = rgb(0xf6c9c6),
};

Look::Look(const Palette& paletteToUse)
    : colours(paletteToUse)
{
    setDefaultSansSerifTypefaceName("DejaVu Sans");
    setColour(juce::PopupMenu::backgroundColourId, colours.plate);
    setColour(juce::PopupMenu::textColourId, colours.ink);
    setColour(juce::PopupMenu::highlightedBackgroundColourId, colours.accent);
    setColour(juce::PopupMenu::highlightedTextColourId, colours.window);
    setColour(juce::TextEditor::backgroundColourId, colours.well);
    setColour(juce::TextEditor::textColourId, colours.ink);
    setColour(juce::TextEditor::outlineColourId, colours.edge);
    setColour(juce::TextEditor::focusedOutlineColourId, colours.accent);
    setColour(juce::TextEditor::highlightColourId, colours.accent.withAlpha(0.4f));
    setColour(juce::TextEditor::highlightedTextColourId, colours.ink);
    setColour(juce::CaretComponent::caretColourId, colours.accent);
    setColour(juce::ScrollBar::thumbColourId, colours.buttonEdge);
    setColour(juce::TooltipWindow::backgroundColourId, colours.plate);
    setColour(juce::TooltipWindow::textColourId, colours.ink);
    setColour(juce::TooltipWindow::outlineColourId, colours.accent);
}

const Look& Look::of(const juce::Component& component)
{
    // The view sets it for itself and all within.
    return static_cast<const Look&>(component.getLookAndFeel());
}

juce::Font Look::font(float size, bool bold)
{
    return juce::Font("DejaVu Sans", size, bold ? juce::Font::bold : juce::Font::plain);
}

int Look::lineCount(const juce::Font& font, const juce::String& text, int width, int most)
{
    return text.isEmpty() ? 0 : std::min(most, 1 + font.getStringWidth(text) / width);
}

void Look::plate(juce::Graphics& g, juce::Rectangle<int> area, juce::Colour fill, juce::Colour edge)
{
    g.setColour(fill);
    g.fillRoundedRectangle(area.toFloat(), corner);
    g.setColour(edge);
    g.drawRoundedRectangle(area.toFloat().reduced(0.5f), corner, 1.0f);
}

void Look::drawTooltip(juce::Graphics& g, const juce::String& text, int width, int height)
{
    // Its window has no rounded corners.
    g.fillAll(colours.plate);
    g.setColour(colours.accent);
    g.drawRect(0, 0, width, height);
    g.setColour(colours.ink);
    g.setFont(font(bodySize));
    auto area = juce::Rectangle<int>(width, height).reduced(2 * grid, tooltipMargin);
    for (const auto& line : juce::StringArray::fromLines(text))
        g.drawText(line, area.removeFromTop(tooltipLine), juce::Justification::centredLeft);
}

juce::Rectangle<int> Look::getTooltipBounds(const juce::String& text, juce::Point<int> at, juce::Rectangle<int> parent)
{
    constexpr int belowPointer = 5 * grid;
    int width = 0;
    const auto lines = juce::StringArray::fromLines(text);
    for (const auto& line : lines)
        width = std::max(width, font(bodySize).getStringWidth(line) + 5 * grid);
    const auto tip = juce::Rectangle<int>(width, lines.size() * tooltipLine + 2 * tooltipMargin);
    // Beside what is tall, so that neither it nor what is around it is covered.
    constexpr int tall = 15 * grid;
    const auto* pointed = juce::Desktop::getInstance().getMainMouseSource().getComponentUnderMouse();
    const auto* view = pointed;
    while (view != nullptr && view->getLocalBounds() != parent)
        view = view->getParentComponent();
    if (view == nullptr || pointed->getHeight() < tall)
        return tip.withPosition(at.x, at.y + belowPointer).constrainedWithin(parent);
    const auto of = view->getLocalArea(pointed, pointed->getLocalBounds());
    return tip.withCentre({ of.getX() - grid - width / 2, at.y }).constrainedWithin(parent);
}

} // namespace BenchPanel
