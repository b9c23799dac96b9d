#include "bench/simulation/RemoteTexts.h"

namespace Simulation
{

namespace
{

constexpr int columns = Bench::RemoteDisplay::columns;
constexpr int highestColumn = 31;

/** What does not fit is cut off. */
void put(std::string& line, int column, const juce::String& text)
{
    for (int at = 0; at < text.length() && column + at < columns; ++at)
    {
        const auto character = text[at];
        const bool isShown = character >= ' ' && character <= '~';
        line[static_cast<std::size_t>(column + at)] = isShown ? static_cast<char>(character) : '?';
    }
}

} // namespace

std::string RemoteTexts::lastingText() const
{
    std::array<std::string, Bench::RemoteDisplay::rows> lines;
    lines.fill(std::string(columns, ' '));
    const auto show = [&](const Text& each)
    {
        if (each.row == 0 || each.row == 1)
            return put(lines[static_cast<std::size_t>(each.row)], each.column, each.text);
        const int fitting = columns - each.column;
        put(lines[0], each.column, each.text);
        put(lines[1], 0, each.text.substring(fitting));
    };
    show(stored[0]);
    // One that wraps has both lines.
    if (stored[0].row == 0)
        show(stored[1]);
    show(covering);
    return "|" + lines[0] + "|" + lines[1] + "|";
}

bool RemoteTexts::showText(int row, int column, const juce::String& text, bool temporary)
{
    if (!temporary && text.isNotEmpty() && column >= 0 && column <= highestColumn)
        stored[row == 1 ? 1 : 0] = { row, column, text };
    return driver.showText(row, column, text, temporary);
}

bool RemoteTexts::showLasting(int row, int column, const juce::String& text)
{
    covering = { row, column, text };
    return driver.showLasting(row, column, text);
}

void RemoteTexts::clearDisplay(bool forgetStored)
{
    if (forgetStored)
        stored = {};
    driver.clearDisplay(forgetStored);
}

} // namespace Simulation
