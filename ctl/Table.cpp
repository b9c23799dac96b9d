#include "ctl/Table.h"

#include "ctl/Columns.h"

#include <functional>

namespace Ctl
{

namespace
{

constexpr int margin = 2;     ///< in front of a line, and between columns
constexpr int narrowest = 20; ///< a column of fewer characters is no use
constexpr int labelWidth = 16;

std::string blanks(int count)
{
    return std::string(static_cast<std::size_t>(std::max(0, count)), ' ');
}

std::string aligned(const std::string& text, int width, Table::Side side)
{
    return side == Table::left ? padded(text, width) : blanks(width - widthOf(text)) + text;
}

} // namespace

std::string broken(const std::string& text, int width, int indent)
{
    if (width <= 0 || widthOf(text) <= width)
        return text;
    std::string all;
    int used = 0;
    std::istringstream words(text);
    for (std::string word; words >> word;)
    {
        const bool fits = used + 1 + widthOf(word) <= width;
        if (used > 0)
            all += fits ? " " : "\n" + blanks(indent);
        used = widthOf(word) + (used > 0 && fits ? used + 1 : 0);
        all += word;
    }
    return all;
}

void Table::add(std::vector<Cell> row)
{
    row.resize(columns.size());
    rows.push_back(std::move(row));
}

std::string Table::text(const Style& style) const
{
    struct Shown
    {
        std::size_t index = 0;
        int width = 0;
    };
    std::vector<Shown> shown;
    for (std::size_t column = 0; column < columns.size(); ++column)
    {
        int width = 0;
        for (const auto& row : rows)
            width = std::max(width, widthOf(row[column].text));
        if (width > 0)
            shown.push_back({ column, std::max(width, widthOf(columns[column].title)) });
    }
    int indent = margin;
    for (std::size_t i = 0; i + 1 < shown.size(); ++i)
        indent += shown[i].width + margin;
    const int rest = style.width > 0 ? std::max(style.width - indent, narrowest) : 0;

    const auto lineOf = [&](const std::function<Cell(std::size_t)>& cellOf)
    {
        std::string line;
        for (const auto& [index, width] : shown)
        {
            const auto [cell, look] = cellOf(index);
            const auto side = columns[index].side;
            const bool isLast = index == shown.back().index;
            const auto whole = isLast && side == left ? broken(cell, rest, indent) : aligned(cell, width, side);
            line += blanks(margin) + (look != nullptr && !cell.empty() ? (style.*look)(whole) : whole);
        }
        return line.erase(line.find_last_not_of(' ') + 1) + "\n";
    };
    auto all = lineOf([&](std::size_t column) { return Cell { columns[column].title, &Style::dim }; });
    for (const auto& row : rows)
        all += lineOf([&](std::size_t column) { return row[column]; });
    return all;
}

std::string labelled(const Style& style, const std::string& label, const std::string& value)
{
    return blanks(margin) + style.dim(padded(label + " ", labelWidth)) + value + "\n";
}

} // namespace Ctl
