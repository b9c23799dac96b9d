#pragma once

#include "support/LogCapture.h"

/** Collects what is logged at error level while it lives; the other levels are silent. One at a time. */
class ErrorLog : private LogCapture
{
public:
    ErrorLog() { Platform::Logger::getInstance()->redirect(nullptr, nullptr, nullptr, &note); }

    static std::vector<std::string> take()
    {
        std::vector<std::string> texts;
        for (const auto& line : LogCapture::take())
            texts.push_back(line.text);
        return texts;
    }

    /** How many of the lines so far hold the text. */
    static long count(const std::string& text)
    {
        const std::lock_guard guard(lock());
        return std::count_if(lines().begin(), lines().end(),
                             [&text](const Line& line) { return line.text.find(text) != std::string::npos; });
    }
};
