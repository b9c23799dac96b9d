#include "platform/SetupStore.h"

#include "platform/Configuration.h"
#include "platform/Logger.h"
#include "platform/SetupEnvironment.h"
#include "platform/Utf8.h"

#include <charconv>
#include <filesystem>
#include <limits>
#include <toml++/toml.h>

namespace Platform
{

namespace
{

constexpr char intType = 'i';
constexpr char textType = 's';
constexpr std::size_t maxTextBytes = 64 * 1024;

template <typename... Arguments>
void logError(int line, const char* format, Arguments... arguments)
{
    Logger::getInstance()->logError("platform/SetupStore", line, "SetupStore", format, arguments...);
}

std::string encode(juce::int32 value)
{
    std::string result(1, intType);
    for (int shift = 0; shift < 32; shift += 8)
        result += static_cast<char>(static_cast<juce::uint32>(value) >> shift);
    return result;
}

std::string encode(const std::string& text)
{
    return textType + text;
}

bool isInt(const std::string& value)
{
    return value.size() == 1 + sizeof(juce::int32) && value.front() == intType;
}

bool isText(const std::string& value)
{
    return !value.empty() && value.front() == textType &&
           juce::CharPointer_UTF8::isValidString(value.data() + 1, static_cast<int>(value.size()) - 1);
}

std::filesystem::path settingsFolder()
{
    return std::filesystem::path(AppConfig::getSystemFilePath().toStdString()) / "settings";
}

/** The factory values, or none and a log line when the file is missing or malformed. Single bad lines are left out. */
SetupValues readFactoryValues()
{
    const auto path = (AppConfig::getResourcePath() + "factory-settings.toml").toStdString();
    SetupValues values;
    try
    {
        for (const auto& [key, value] : toml::parse_file(path))
        {
            const auto name = key.str();
            int index = 0;
            const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), index);
            const auto number = value.value_exact<std::int64_t>();
            const auto text = value.value_exact<std::string>();
            if (error != std::errc {} || end != name.data() + name.size() || index < 0)
                logError(__LINE__, "%s:%u: not a setting index", path.c_str(), key.source().begin.line);
            else if (number && *number >= std::numeric_limits<juce::int32>::min() &&
                     *number <= std::numeric_limits<juce::int32>::max())
                values[index] = encode(static_cast<juce::int32>(*number));
            else if (text && text->size() <= maxTextBytes)
                values[index] = encode(*text);
            else
                logError(__LINE__, "%s:%u: setting %d: a 32-bit number or a text is wanted", path.c_str(),
                         key.source().begin.line, index);
        }
    }
    catch (const toml::parse_error& error)
    {
        logError(__LINE__, "%s:%u: %s", path.c_str(), error.source().begin.line,
                 std::string(error.description()).c_str());
        return {};
    }
    if (values.empty())
        logError(__LINE__, "%s: no factory values", path.c_str());
    return values;
}

/** What LMDB answers when the files are not those of a whole store, as against one that cannot be reached. */
bool isDamage(int result)
{
    return result == MDB_INVALID || result == MDB_CORRUPTED || result == MDB_VERSION_MISMATCH ||
           result == MDB_PAGE_NOTFOUND || result == MDB_INCOMPATIBLE || result == MDB_PANIC;
}

int openEnvironment()
{
    auto& environment = SetupEnvironment::get();
    const auto folder = settingsFolder();
    int result = environment.open(folder);
    if (isDamage(result))
    {
        const std::filesystem::path aside = folder.string() + ".damaged";
        logError(__LINE__, "%s: %s; the store is set aside as %s", folder.c_str(), mdb_strerror(result), aside.c_str());
        std::error_code error;
        std::filesystem::remove_all(aside, error);
        std::filesystem::rename(folder, aside, error);
        result = environment.open(folder);
    }
    if (result != MDB_SUCCESS)
        logError(__LINE__, "%s: %s", folder.c_str(), mdb_strerror(result));
    return result;
}

/** Serialises opening, filling and closing, and remembers a store that could not be had, so that it is said once. */
struct Opening
{
    std::mutex mutex;
    bool failed = false;
};

Opening& opening()
{
    static Opening instance;
    return instance;
}

/** With the lock of `opening`. */
bool openAndFill()
{
    auto& environment = SetupEnvironment::get();
    opening().failed = openEnvironment() != MDB_SUCCESS;
    if (opening().failed)
        return false;
    if (!environment.isEmpty())
        return true;
    const auto values = readFactoryValues();
    if (values.empty())
        return false;
    const int result = environment.replaceAll(values);
    if (result != MDB_SUCCESS)
        logError(__LINE__, "the factory values cannot be stored: %s", mdb_strerror(result));
    return result == MDB_SUCCESS;
}

/** Opens the store, unless that has failed before. */
bool isReady()
{
    const std::scoped_lock lock(opening().mutex);
    if (!SetupEnvironment::get().isOpen() && !opening().failed)
        openAndFill();
    return SetupEnvironment::get().isOpen();
}

/** An access to the store, which its first use opens; it may also be closed by another thread in between. */
template <typename Access>
int whenReady(Access access)
{
    int result = access();
    while (result == SetupEnvironment::notOpen && isReady())
        result = access();
    return result;
}

std::string readValue(int index)
{
    std::string value;
    const int result = whenReady([&] { return SetupEnvironment::get().read(index, value); });
    // That the store cannot be had was said when it was opened.
    if (result != MDB_SUCCESS && result != MDB_NOTFOUND && result != SetupEnvironment::notOpen)
        logError(__LINE__, "setting %d cannot be read: %s", index, mdb_strerror(result));
    return value;
}

bool writeValue(int index, const std::string& value)
{
    const int result = whenReady([&] { return SetupEnvironment::get().write(index, value); });
    if (result != MDB_SUCCESS)
        logError(__LINE__, "setting %d cannot be written: %s", index, mdb_strerror(result));
    return result == MDB_SUCCESS;
}

} // namespace

juce::int32 VX_GetSetupValueInt(int index)
{
    const auto value = readValue(index);
    return isInt(value) ? static_cast<juce::int32>(juce::ByteOrder::littleEndianInt(value.data() + 1)) : 0;
}

juce::String VX_GetSetupValueString(int index)
{
    const auto value = readValue(index);
    return isText(value) ? textOfUtf8(std::string_view(value).substr(1)) : juce::String();
}

bool VX_SetSetupValueInt(int index, juce::int32 value)
{
    return writeValue(index, encode(value));
}

bool VX_SetSetupValueString(int index, const juce::String& value)
{
    const auto text = value.toStdString();
    if (text.size() > maxTextBytes)
    {
        logError(__LINE__, "setting %d: a text of %zu bytes is refused", index, text.size());
        return false;
    }
    return writeValue(index, encode(text));
}

bool VX_IsSetupValueString(int index)
{
    return isText(readValue(index));
}

bool VX_LoadDataFromSystemFile()
{
    const std::scoped_lock lock(opening().mutex);
    return openAndFill();
}

bool VX_LoadDataFromFactoryFile()
{
    const std::scoped_lock lock(opening().mutex);
    const auto values = readFactoryValues();
    if (values.empty())
        return false;
    auto& environment = SetupEnvironment::get();
    if (environment.isOpen())
    {
        const int result = environment.replaceAll(values);
        if (result != MDB_SUCCESS)
        {
            logError(__LINE__, "the factory values cannot be stored: %s", mdb_strerror(result));
            return false;
        }
    }
    std::error_code error;
    std::filesystem::remove_all(settingsFolder(), error);
    if (error)
        logError(__LINE__, "%s: %s", settingsFolder().c_str(), error.message().c_str());
    return !error;
}

void VX_ReleaseSetupInfo()
{
    const std::scoped_lock lock(opening().mutex);
    SetupEnvironment::get().close();
    opening().failed = false;
}

} // namespace Platform
