#pragma once

#include <atomic>
#include <cstdarg>
#include <juce_core/juce_core.h>

namespace Platform
{

/**
    The process-wide log. Lines go to the log library named by `unit.log_library`, which is loaded on the first use;
    without it, or without one of its entry points, the calls answer false and write nothing, unless
    `useStandardError` has found them another place. Any thread may log.

    Every call names the source file in short form ("EngineLayer/HostSessionManager"), the line and a tag, as a rule the
    class name.
*/
class Logger
{
public:
    /** Entry point of one level: file, line, tag and format are UTF-8; the arguments are those of the format. */
    using Entry = bool (*)(const char* file, int line, const char* tag, const char* format, va_list arguments);
    using StoreEntry = bool (*)(const char* file);

    /** Loads the library on the first call, which is made before other threads run. Never destroyed. */
    static Logger* getInstance();

    /** Text form: the text is logged as it stands, whatever it contains. */
    bool logDebug(const char* file, int line, const char* tag, const juce::String& text);
    bool logInfo(const char* file, int line, const char* tag, const juce::String& text);
    bool logError(const char* file, int line, const char* tag, const juce::String& text);

    /** Format form: printf format with its arguments. */
    bool logDebug(const char* file, int line, const char* tag, const char* format, ...)
        __attribute__((format(printf, 5, 6)));
    bool logInfo(const char* file, int line, const char* tag, const char* format, ...)
        __attribute__((format(printf, 5, 6)));
    bool logError(const char* file, int line, const char* tag, const char* format, ...)
        __attribute__((format(printf, 5, 6)));

    /**
        Where there is no log library, standard error says so and takes the lines; the calls answer false all the same.
        Once, before other threads run.
    */
    void useStandardError();

    /** What the levels do with a line instead of the library; for tests, at any time. Null makes a level silent. */
    void redirect(Entry debug, Entry info, Entry warn, Entry error);

private:
    Logger();
    void load(const juce::String& library);

    void* library = nullptr;
    std::atomic<Entry> debugEntry { nullptr };
    std::atomic<Entry> infoEntry { nullptr };
    std::atomic<Entry> warnEntry { nullptr };
    std::atomic<Entry> errorEntry { nullptr };
    StoreEntry readEntry = nullptr;
    StoreEntry saveEntry = nullptr;
    juce::String loadError; ///< of the library; empty when it is there
};

/** The second, simpler channel: one printf line to standard error. Any thread. */
void debugPrint(const char* format, ...) __attribute__((format(printf, 1, 2)));

/** The bytes as hexadecimal pairs separated by single blanks, "A0 55 07". */
juce::String hexPairs(const void* data, int length);

} // namespace Platform
