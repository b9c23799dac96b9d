#pragma once

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <string>

/** Text in columns of a terminal. */
namespace Ctl
{

/** Characters of a UTF-8 text; all of ours are one column wide. */
inline int widthOf(const std::string& text)
{
    return static_cast<int>(
        std::ranges::count_if(text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

/** Filled up with blanks; a wider one stays as it is. */
inline std::string padded(const std::string& text, int width)
{
    return text + std::string(static_cast<std::size_t>(std::max(0, width - widthOf(text))), ' ');
}

/** Cut with an ellipsis when it is wider. */
inline std::string shortened(const std::string& text, int width)
{
    if (widthOf(text) <= width)
        return text;
    std::string cut;
    int count = 0;
    for (const char c : text)
    {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80 && ++count == width)
            break;
        cut += c;
    }
    return cut + "…";
}

/** With so many digits behind the point. */
inline std::string fixed(double value, int decimals)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << value;
    return text.str();
}

} // namespace Ctl
