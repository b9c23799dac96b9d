#include "platform/base/Logger.h"

#include "platform/config/Configuration.h"

#include <array>
#include <cstdio>
#include <dlfcn.h>

namespace Platform
{

namespace
{

bool callEntry(Logger::Entry entry, const char* file, int line, const char* tag, const char* format, ...)
{
    if (entry == nullptr)
        return false;
    va_list arguments;
    va_start(arguments, format);
    const bool result = entry(file, line, tag, format, arguments);
    va_end(arguments);
    return result;
}

bool callEntryList(Logger::Entry entry, const char* file, int line, const char* tag, const char* format,
                   va_list arguments)
{
    return entry != nullptr && entry(file, line, tag, format, arguments);
}

template <char level>
bool writeToStandardError(const char* file, int line, const char* tag, const char* format, va_list arguments)
{
    // One call for the whole line: those of several threads do not mix.
    std::array<char, 1024> text {};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    std::fprintf(stderr, "%c %s %s:%d %s\n", level, tag, file, line, text.data());
    return false;
}

template <typename Function>
Function resolve(void* library, const char* name)
{
    return reinterpret_cast<Function>(dlsym(library, name));
}

} // namespace

Logger* Logger::getInstance()
{
    static Logger& instance = *new Logger;
    return &instance;
}

Logger::Logger()
{
    load(Configuration::get().logLibrary);
}

void Logger::load(const juce::String& name)
{
    library = dlopen(name.toRawUTF8(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
    {
        loadError = dlerror();
        return;
    }
    debugEntry = resolve<Entry>(library, "VX_LogDebug");
    infoEntry = resolve<Entry>(library, "VX_LogInfo");
    // No line of the engine is a warning; the six entries are the library's contract.
    warnEntry = resolve<Entry>(library, "VX_LogWarn");
    errorEntry = resolve<Entry>(library, "VX_LogError");
    readEntry = resolve<StoreEntry>(library, "VX_ReadLog");
    saveEntry = resolve<StoreEntry>(library, "VX_SaveLog");
}

bool Logger::logDebug(const char* file, int line, const char* tag, const juce::String& text)
{
    return callEntry(debugEntry, file, line, tag, "%s", text.toRawUTF8());
}

bool Logger::logInfo(const char* file, int line, const char* tag, const juce::String& text)
{
    return callEntry(infoEntry, file, line, tag, "%s", text.toRawUTF8());
}

bool Logger::logError(const char* file, int line, const char* tag, const juce::String& text)
{
    return callEntry(errorEntry, file, line, tag, "%s", text.toRawUTF8());
}

bool Logger::logDebug(const char* file, int line, const char* tag, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const bool result = callEntryList(debugEntry, file, line, tag, format, arguments);
    va_end(arguments);
    return result;
}

bool Logger::logInfo(const char* file, int line, const char* tag, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const bool result = callEntryList(infoEntry, file, line, tag, format, arguments);
    va_end(arguments);
    return result;
}

bool Logger::logError(const char* file, int line, const char* tag, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const bool result = callEntryList(errorEntry, file, line, tag, format, arguments);
    va_end(arguments);
    return result;
}

void Logger::useStandardError()
{
    if (loadError.isEmpty())
        return;
    std::fprintf(stderr, "headunit-engine: no log library: %s; what it would keep follows here\n",
                 loadError.toRawUTF8());
    debugEntry = writeToStandardError<'D'>;
    infoEntry = writeToStandardError<'I'>;
    errorEntry = writeToStandardError<'E'>;
}

void Logger::redirect(Entry debug, Entry info, Entry warn, Entry error)
{
    debugEntry = debug;
    infoEntry = info;
    warnEntry = warn;
    errorEntry = error;
}

void debugPrint(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
}

juce::String hexPairs(const void* data, int length)
{
    return juce::String::toHexString(data, length, 1).toUpperCase();
}

} // namespace Platform
