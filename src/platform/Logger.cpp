#include "platform/Logger.h"

#include "platform/Configuration.h"

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

bool callEntryList(Logger::Entry entry, const char* file, int line, const char* tag, const char* format, va_list arguments)
{
    return entry != nullptr && entry(file, line, tag, format, arguments);
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
        return;
    const auto resolve = [this](auto& entry, const char* symbol)
    { entry = reinterpret_cast<std::remove_reference_t<decltype(entry)>>(dlsym(library, symbol)); };
    resolve(debugEntry, "VX_LogDebug");
    resolve(infoEntry, "VX_LogInfo");
    resolve(warnEntry, "VX_LogWarn");
    resolve(errorEntry, "VX_LogError");
    resolve(readEntry, "VX_ReadLog");
    resolve(saveEntry, "VX_SaveLog");
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
