#pragma once

#include "bench/panel/Look.h"

namespace BenchPanel
{

/** What a button has beside its words. */
constexpr int aroundWords = 5 * Look::grid;

/** As wide as all of these want to be side by side. */
template <typename Buttons>
int widthOfRow(const Buttons& buttons, const juce::Font& font)
{
    int width = -Look::grid;
    for (const auto& button : buttons)
        width += font.getStringWidth(button->getName()) + aroundWords + Look::grid;
    return width;
}

/** Side by side over the whole row, each as wide as its words want in proportion to the others. */
template <typename Buttons>
void layOutRow(const Buttons& buttons, const juce::Font& font, juce::Rectangle<int> row)
{
    auto left = widthOfRow(buttons, font) + Look::grid;
    row = row.withWidth(row.getWidth() + Look::grid);
    for (const auto& button : buttons)
    {
        const auto wanted = font.getStringWidth(button->getName()) + aroundWords + Look::grid;
        button->setBounds(row.removeFromLeft(row.getWidth() * wanted / left).withTrimmedRight(Look::grid));
        left -= wanted;
    }
}

} // namespace BenchPanel
