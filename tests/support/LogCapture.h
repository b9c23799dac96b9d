#pragma once

#include "platform/base/Logger.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

/** Collects the log lines of every level while it lives. Any thread may log. */
class LogCapture
{
public:
    struct Line
    {
        int number;
        std::string file;
        std::string tag;
        std::string text;
    };

    LogCapture()
    {
        lines().clear();
        Platform::Logger::getInstance()->redirect(&note, &note, &note, &note);
    }
    ~LogCapture() { Platform::Logger::getInstance()->redirect(nullptr, nullptr, nullptr, nullptr); }

    static std::vector<Line> take()
    {
        const std::lock_guard guard(lock());
        return std::exchange(lines(), {});
    }

    /** How many lines collected so far have this text; they stay. */
    static int count(const std::string& text)
    {
        const std::lock_guard guard(lock());
        return static_cast<int>(
            std::count_if(lines().begin(), lines().end(), [&](auto& each) { return each.text == text; }));
    }

protected:
    static bool note(const char* file, int line, const char* tag, const char* format, va_list arguments)
    {
        char text[1024];
        std::vsnprintf(text, sizeof text, format, arguments);
        const std::lock_guard guard(lock());
        lines().push_back({ line, file, tag, text });
        return true;
    }

    static std::vector<Line>& lines()
    {
        static std::vector<Line> collected;
        return collected;
    }
    static std::mutex& lock()
    {
        static std::mutex instance;
        return instance;
    }
};
