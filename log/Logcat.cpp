/**
    The log library: six entry points with C linkage, all callable from any thread. A line reads

        2026-11-24 21:40:32.123  error    HostSessionManager  EngineLayer/HostSessionManager:212  ack timed out

    and goes to a file of at most 1 MiB, of which the last five are kept, and, from a level on, to standard error.

    HEADUNIT_LOG_FILE      the file; /var/log/headunit/headunit.log
    HEADUNIT_LOG_CONSOLE   off, error, info or debug: the lowest level on standard error; error
*/

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <span>
#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <string>
#include <string_view>

namespace
{

constexpr const char* defaultFile = "/var/log/headunit/headunit.log";
constexpr std::size_t maxFileBytes = 1024 * 1024;
constexpr std::size_t oldFiles = 4; // beside the current one
constexpr std::size_t usualLineBytes = 512;
constexpr const char* linePattern = "%Y-%m-%d %H:%M:%S.%e  %-7l  %v";

std::string environmentOr(const char* name, const char* fallback)
{
    const auto* value = std::getenv(name);
    return value == nullptr || *value == '\0' ? fallback : value;
}

spdlog::level::level_enum consoleLevel()
{
    const auto name = environmentOr("HEADUNIT_LOG_CONSOLE", "error");
    for (const auto level : { spdlog::level::off, spdlog::level::err, spdlog::level::info, spdlog::level::debug })
        if (name == spdlog::level::to_string_view(level).data())
            return level;
    std::fprintf(stderr, "HEADUNIT_LOG_CONSOLE is '%s': off, error, info or debug; taken as error\n", name.c_str());
    return spdlog::level::err;
}

class Log
{
public:
    /** Never destroyed, so that what is logged while the process ends is not lost. */
    static Log& get()
    {
        static auto& instance = *new Log;
        return instance;
    }

    void write(spdlog::level::level_enum level, const char* file, int line, const char* tag, std::string_view text)
    {
        logger.log(level, "{:<20} {}:{}  {}", tag == nullptr ? "" : tag, file == nullptr ? "" : file, line, text);
    }

    /** "" when there is only the console. */
    const std::string& getPath() const { return currentPath; }

private:
    Log()
    {
        const auto console = std::make_shared<spdlog::sinks::stderr_sink_mt>();
        console->set_level(consoleLevel());
        logger.sinks().push_back(console);
        openFile(environmentOr("HEADUNIT_LOG_FILE", defaultFile));
        logger.set_pattern(linePattern);
        logger.set_level(spdlog::level::debug);
        logger.flush_on(spdlog::level::debug); // the last lines before a fault are those that matter
    }

    void openFile(const std::string& path)
    {
        try
        {
            logger.sinks().push_back(
                std::make_shared<spdlog::sinks::rotating_file_sink_mt>(path, maxFileBytes, oldFiles));
            currentPath = path;
        }
        catch (const spdlog::spdlog_ex& error)
        {
            std::fprintf(stderr, "no log file, lines go to standard error only: %s\n", error.what());
        }
    }

    spdlog::logger logger { "headunit" };
    std::string currentPath;
};

/** A line stays a line: ends are cut, and breaks inside become blanks. */
std::string_view asOneLine(std::span<char> text)
{
    std::size_t length = text.size();
    const auto isBreak = [](char each) { return each == '\n' || each == '\r'; };
    while (length > 0 && isBreak(text[length - 1]))
        --length;
    std::replace_if(text.begin(), text.end(), isBreak, ' ');
    return { text.data(), length };
}

bool writeLine(spdlog::level::level_enum level, const char* file, int line, const char* tag, const char* format,
               va_list arguments)
{
    try
    {
        va_list again;
        va_copy(again, arguments);
        std::array<char, usualLineBytes> usual;
        const int length = std::vsnprintf(usual.data(), usual.size(), format, arguments);
        const auto size = static_cast<std::size_t>(std::max(length, 0));
        std::string longer;
        if (size >= usual.size())
        {
            longer.resize(size);
            std::vsnprintf(longer.data(), size + 1, format, again);
        }
        va_end(again);
        if (length < 0)
            return false;
        Log::get().write(level, file, line, tag, asOneLine(longer.empty() ? std::span(usual.data(), size) : longer));
        return true;
    }
    catch (...)
    {
        return false; // no exception may pass the C linkage; the caller is told by the result
    }
}

} // namespace

#define VX_ENTRY extern "C" [[gnu::visibility("default")]] bool

VX_ENTRY VX_LogDebug(const char* file, int line, const char* tag, const char* format, va_list arguments)
{
    return writeLine(spdlog::level::debug, file, line, tag, format, arguments);
}

VX_ENTRY VX_LogInfo(const char* file, int line, const char* tag, const char* format, va_list arguments)
{
    return writeLine(spdlog::level::info, file, line, tag, format, arguments);
}

VX_ENTRY VX_LogWarn(const char* file, int line, const char* tag, const char* format, va_list arguments)
{
    return writeLine(spdlog::level::warn, file, line, tag, format, arguments);
}

VX_ENTRY VX_LogError(const char* file, int line, const char* tag, const char* format, va_list arguments)
{
    return writeLine(spdlog::level::err, file, line, tag, format, arguments);
}

/** Prints a log, the current one when `path` is null or empty, on standard output. */
VX_ENTRY VX_ReadLog(const char* path)
{
    try
    {
        std::ifstream input(path == nullptr || *path == '\0' ? Log::get().getPath() : path, std::ios::binary);
        std::array<char, 4096> block;
        const bool opened = input.is_open();
        while (input.read(block.data(), block.size()) || input.gcount() > 0)
            std::cout.write(block.data(), input.gcount());
        std::cout.flush();
        return opened && std::cout.good();
    }
    catch (...)
    {
        return false;
    }
}

/** Copies the current log to `path`, which it replaces. */
VX_ENTRY VX_SaveLog(const char* path)
{
    try
    {
        std::error_code error;
        return path != nullptr && std::filesystem::copy_file(Log::get().getPath(), path,
                                                             std::filesystem::copy_options::overwrite_existing, error);
    }
    catch (...)
    {
        return false;
    }
}
