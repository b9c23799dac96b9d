#pragma once

#include <string>

/** The command that asks a running engine, and how answers are printed. */
namespace Ctl
{

/** Colours for a terminal, or plain text. */
class Style
{
public:
    /** `lineWidth` is how many characters a line has; 0 for no limit. */
    explicit Style(bool useColour, int lineWidth = 0)
        : width(lineWidth)
        , colour(useColour)
    {
    }
    /** For standard output: coloured on a terminal that can do it, unless NO_COLOR is set. */
    static Style ofOutput();

    std::string bold(const std::string& text) const { return wrapped("1", text); }
    std::string dim(const std::string& text) const { return wrapped("2", text); }
    std::string good(const std::string& text) const { return wrapped("32", text); }
    std::string bad(const std::string& text) const { return wrapped("31", text); }
    std::string warning(const std::string& text) const { return wrapped("33", text); }
    std::string accent(const std::string& text) const { return wrapped("36", text); }

    const int width;

private:
    bool colour;

    std::string wrapped(const char* code, const std::string& text) const
    {
        return colour && !text.empty() ? std::string("\033[") + code + "m" + text + "\033[0m" : text;
    }
};

/** One of the style's looks, or null for plain text. */
using Look = std::string (Style::*)(const std::string&) const;

} // namespace Ctl
