#pragma once

#include "ctl/Style.h"

#include <optional>
#include <vector>

namespace Ctl
{

/** Plain text, and how it looks once it has its width. */
struct Cell
{
    std::string text;
    Look look = nullptr;
};

/** Rows in aligned columns with a line of titles. A column that is empty in every row is left out. */
class Table
{
public:
    enum Side { left, right };
    struct Column
    {
        const char* title;
        Side side = left;
    };

    explicit Table(std::vector<Column> columnsToUse)
        : columns(std::move(columnsToUse))
    {
    }

    /** A cell for each column; what is missing at the end is empty. */
    void add(std::vector<Cell> row);
    bool isEmpty() const { return rows.empty(); }
    /** Each line with its end. What is too long for the style's lines is broken in the last column. */
    std::string text(const Style& style) const;

private:
    std::vector<Column> columns;
    std::vector<std::vector<Cell>> rows;
};

/** A line of text with a name in front, for values below each other. */
std::string labelled(const Style& style, const std::string& label, const std::string& value);

/** The words in lines of this width at most (0: in one), each but the first indented so far. */
std::string broken(const std::string& text, int width, int indent);

} // namespace Ctl
