#pragma once

#include <array>
#include <atomic>
#include <cstdarg>
#include <juce_core/juce_core.h>
#include <map>
#include <mutex>
#include <string>

namespace Platform
{

/**
    The process-wide log. Lines go to the log library named by `unit.log_library`, which is loaded on the first use.
    Without it, or without one of its entry points, the calls return false and write nothing, unless `useStandardError`
    was called. Any thread may log. Sources write through a `Log`.
*/
class Logger
{
public:
    enum Level { debug, info, warn, error };

    /** Entry point of one level: file, line, tag and format are UTF-8; the arguments are those of the format. */
    using Entry = bool (*)(const char* file, int line, const char* tag, const char* format, va_list arguments);
    using StoreEntry = bool (*)(const char* file);

    /** Loads the library on the first call, which is made before other threads run. Never destroyed. */
    static Logger* getInstance();

    bool write(Level level, const char* file, int line, const char* tag, const char* format, va_list arguments);

    /**
        Without a log library, says so on standard error and sends the lines there; the calls still return false. Once,
        before other threads run.
    */
    void useStandardError();

    enum class LevelChange {
        done,
        unknownLevel,
        tooManyFiles ///< have levels of their own; "default" takes them back
    };
    static constexpr std::size_t mostFiles = 64;

    /**
        From now on nothing below "error", "info" or "debug" is written of the file ("Extend/ViewManager"), or of all files
        for an empty name; "verbose" is "debug" here, and "default" takes what was set back. No change unless it is done.
        Any thread.
    */
    LevelChange setLevel(const std::string& level, const std::string& file);

    /** Why there is no log library; empty when there is one. */
    const juce::String& getLoadError() const { return loadError; }

    /** At any time: where each level's lines go instead of the library. Null makes a level silent. */
    void redirect(Entry toDebug, Entry toInfo, Entry toWarn, Entry toError);

private:
    Logger();
    void load(const juce::String& library);

    void* library = nullptr;
    bool isWanted(Level level, const char* file) const;

    std::array<std::atomic<Entry>, 4> entries {}; ///< by level
    std::atomic<bool> hasLevels { false };
    mutable std::mutex levelLock;
    std::map<std::string, Level, std::less<>> levels; ///< lowest ones by file, "" for all others
    StoreEntry readEntry = nullptr;
    StoreEntry saveEntry = nullptr;
    juce::String loadError; ///< of the library; empty when it is there
};

/**
    The log of a source file: its short name ("EngineLayer/HostSessionManager") and a tag, usually the class name.
    `logger().error("%d frames wait", n)` logs with its own line number; a line number that is a contract goes into the
    brackets.
*/
class Log
{
public:
    constexpr Log(const char* sourceFile, const char* lineTag)
        : file(sourceFile)
        , tag(lineTag)
    {
    }

    /** One place in the source. The calls return what the entry point returns. */
    class Line
    {
    public:
        /** The text is logged as it stands, whatever it contains. */
        bool debug(const juce::String& text) const { return debug("%s", text.toRawUTF8()); }
        bool info(const juce::String& text) const { return info("%s", text.toRawUTF8()); }
        bool error(const juce::String& text) const { return error("%s", text.toRawUTF8()); }

        /** A printf format with its arguments. */
        bool debug(const char* format, ...) const __attribute__((format(printf, 2, 3)));
        bool info(const char* format, ...) const __attribute__((format(printf, 2, 3)));
        bool error(const char* format, ...) const __attribute__((format(printf, 2, 3)));

    private:
        friend class Log;
        constexpr Line(const Log& source, int line)
            : log(source)
            , number(line)
        {
        }

        const Log& log;
        int number;
    };

    // Not std::source_location, which clang 14 lacks and the fuzz programs are built with.
    constexpr Line operator()(int line = __builtin_LINE()) const { return Line(*this, line); }

private:
    const char* file;
    const char* tag;
};

/** The second, simpler channel: one printf line to standard error. Any thread. */
void debugPrint(const char* format, ...) __attribute__((format(printf, 1, 2)));

/** The bytes as hexadecimal pairs separated by single blanks, "A0 55 07". */
juce::String hexPairs(const void* data, int length);

} // namespace Platform
