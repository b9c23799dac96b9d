#pragma once

#include <string>

namespace Bench
{

/** Colours for a terminal, or plain text. */
class Style
{
public:
    explicit Style(bool useColour)
        : colour(useColour)
    {
    }

    std::string bold(const std::string& text) const { return wrapped("1", text); }
    std::string dim(const std::string& text) const { return wrapped("2", text); }
    std::string good(const std::string& text) const { return wrapped("32", text); }
    std::string bad(const std::string& text) const { return wrapped("31", text); }
    std::string warning(const std::string& text) const { return wrapped("33", text); }
    std::string accent(const std::string& text) const { return wrapped("36", text); }

private:
    bool colour;

    std::string wrapped(const char* code, const std::string& text) const
    {
        return colour ? std::string("\033[") + code + "m" + text + "\033[0m" : text;
    }
};

} // namespace Bench
