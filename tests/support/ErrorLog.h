#pragma once

#include "platform/Logger.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

/** Collects what is logged at error level while it lives; the other levels are silent. One at a time. */
class ErrorLog
{
public:
    ErrorLog()
    {
        take();
        Platform::Logger::getInstance()->redirect(nullptr, nullptr, nullptr, collect);
    }
    /** Threads that log have ended by then. */
    ~ErrorLog() { Platform::Logger::getInstance()->redirect(nullptr, nullptr, nullptr, nullptr); }

    std::vector<std::string> take()
    {
        const std::lock_guard guard(lock);
        return std::exchange(lines, {});
    }

    /** How many of the lines so far hold the text. */
    static long count(const std::string& text)
    {
        const std::lock_guard guard(lock);
        return std::count_if(lines.begin(), lines.end(),
                             [&text](const std::string& line) { return line.find(text) != std::string::npos; });
    }

private:
    static bool collect(const char*, int, const char*, const char* format, va_list arguments)
    {
        char text[1024];
        std::vsnprintf(text, sizeof(text), format, arguments);
        const std::lock_guard guard(lock);
        lines.emplace_back(text);
        return true;
    }

    static inline std::mutex lock;
    static inline std::vector<std::string> lines;
};
