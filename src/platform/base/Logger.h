#pragma once

#include <array>
#include <atomic>
#include <cstdarg>
#include <juce_core/juce_core.h>

namespace Platform
{

/**
    The process-wide log. Lines go to the log library named by `unit.log_library`, which is loaded on the first use;
    without it, or without one of its entry points, the calls answer false and write nothing, unless `useStandardError`
    has found them another place. Any thread may log. Sources write through a `Log`.
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
        Where there is no log library, standard error says so and takes the lines; the calls answer false all the same.
        Once, before other threads run.
    */
    void useStandardError();

    /** What the levels do with a line instead of the library; for tests, at any time. Null makes a level silent. */
    void redirect(Entry toDebug, Entry toInfo, Entry toWarn, Entry toError);

private:
    Logger();
    void load(const juce::String& library);

    void* library = nullptr;
    std::array<std::atomic<Entry>, 4> entries {}; ///< by level
    StoreEntry readEntry = nullptr;
    StoreEntry saveEntry = nullptr;
    juce::String loadError; ///< of the library; empty when it is there
};

/**
    What a source file logs by: its name in short form ("EngineLayer/HostSessionManager") and the tag of its lines, as a
    rule the class name. `logger().error("%d frames wait", n)` names the line it stands in; a number that is a contract
    goes into the brackets.
*/
class Log
{
public:
    constexpr Log(const char* sourceFile, const char* lineTag)
        : file(sourceFile)
        , tag(lineTag)
    {
    }

    /** One line of the log at one place of the source. The calls answer what the entry point answers. */
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
