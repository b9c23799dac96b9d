#include "platform/base/Logger.h"

#include "platform/config/Configuration.h"

#include <array>
#include <cstdio>
#include <dlfcn.h>

namespace Platform
{

namespace
{

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
    // No line of the engine is a warning; the six entries are the library's contract.
    static constexpr std::array names { "VX_LogDebug", "VX_LogInfo", "VX_LogWarn", "VX_LogError" };
    for (std::size_t level = 0; level < names.size(); ++level)
        entries[level] = resolve<Entry>(library, names[level]);
    readEntry = resolve<StoreEntry>(library, "VX_ReadLog");
    saveEntry = resolve<StoreEntry>(library, "VX_SaveLog");
}

Logger::LevelChange Logger::setLevel(const std::string& level, const std::string& file)
{
    static const std::map<std::string, Level, std::less<>> byName {
        { "error", error }, { "info", info }, { "debug", debug }, { "verbose", debug }
    };
    const auto found = byName.find(level);
    const bool isDefault = level == "default";
    if (found == byName.end() && !isDefault)
        return LevelChange::unknownLevel;
    const std::lock_guard guard(levelLock);
    if (!isDefault && !file.empty() && !levels.contains(file) && levels.size() - levels.count("") >= mostFiles)
        return LevelChange::tooManyFiles;
    if (!isDefault)
        levels[file] = found->second;
    else if (file.empty())
        levels.clear();
    else
        levels.erase(file);
    hasLevels = !levels.empty();
    return LevelChange::done;
}

bool Logger::isWanted(Level level, const char* file) const
{
    const std::lock_guard guard(levelLock);
    auto lowest = levels.find(std::string_view(file));
    if (lowest == levels.end())
        lowest = levels.find(std::string_view());
    return lowest == levels.end() || level >= lowest->second;
}

bool Logger::write(Level level, const char* file, int line, const char* tag, const char* format, va_list arguments)
{
    if (hasLevels.load(std::memory_order_relaxed) && !isWanted(level, file))
        return true;
    const Entry entry = entries[level];
    return entry != nullptr && entry(file, line, tag, format, arguments);
}

void Logger::useStandardError()
{
    if (loadError.isEmpty())
        return;
    std::fprintf(stderr, "headunit-engine: no log library: %s; what it would keep follows here\n",
                 loadError.toRawUTF8());
    redirect(writeToStandardError<'D'>, writeToStandardError<'I'>, nullptr, writeToStandardError<'E'>);
}

void Logger::redirect(Entry toDebug, Entry toInfo, Entry toWarn, Entry toError)
{
    entries[debug] = toDebug;
    entries[info] = toInfo;
    entries[warn] = toWarn;
    entries[error] = toError;
}

bool Log::Line::debug(const char* format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    const bool result = Logger::getInstance()->write(Logger::debug, log.file, number, log.tag, format, arguments);
    va_end(arguments);
    return result;
}

bool Log::Line::info(const char* format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    const bool result = Logger::getInstance()->write(Logger::info, log.file, number, log.tag, format, arguments);
    va_end(arguments);
    return result;
}

bool Log::Line::error(const char* format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    const bool result = Logger::getInstance()->write(Logger::error, log.file, number, log.tag, format, arguments);
    va_end(arguments);
    return result;
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
