#include "platform/config/Configuration.h"

#include "platform/base/Pubhead.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <toml++/toml.h>

namespace Platform
{

namespace
{

constexpr int maxBaud = 4000000;
constexpr int maxScreenSide = 16384;
constexpr int maxLine = 65535;
constexpr std::string_view simulatedPrefix = Configuration::simulated;

/** Takes one value into the configuration. The answer is what would be wanted there, "" when the value was taken. */
using Take = std::string (*)(const toml::node& value, const juce::File& folder, Configuration& target);

std::string wholeNumber(int low, int high)
{
    return "a whole number from " + std::to_string(low) + " to " + std::to_string(high) + " is wanted";
}

bool takeInt(const toml::node& value, int low, int high, int& target)
{
    const auto number = value.value_exact<std::int64_t>();
    if (!number || *number < low || *number > high)
        return false;
    target = static_cast<int>(*number);
    return true;
}

/** "" when the value is no text, or an empty one. */
juce::String textOf(const toml::node& value)
{
    return juce::String(value.value_exact<std::string>().value_or(""));
}

std::string resolvePath(const toml::node& value, const juce::File& folder, juce::String& target)
{
    const auto text = textOf(value);
    if (text.isEmpty())
        return "a path is wanted";
    target = folder.getChildFile(text).getFullPathName();
    return {};
}

template <auto member>
std::string takeText(const toml::node& value, const juce::File&, Configuration& target)
{
    const auto text = textOf(value);
    if (text.isEmpty())
        return "a text is wanted";
    target.*member = text;
    return {};
}

template <auto member>
std::string takeBool(const toml::node& value, const juce::File&, Configuration& target)
{
    const auto flag = value.value_exact<bool>();
    if (!flag)
        return "true or false is wanted";
    target.*member = *flag;
    return {};
}

template <auto member>
std::string takePath(const toml::node& value, const juce::File& folder, Configuration& target)
{
    return resolvePath(value, folder, target.*member);
}

template <auto member>
std::string takeFolder(const toml::node& value, const juce::File& folder, Configuration& target)
{
    auto wanted = resolvePath(value, folder, target.*member);
    if (wanted.empty() && !(target.*member).endsWithChar('/'))
        target.*member << '/';
    return wanted;
}

/** A device file, or "socket:" and the path of a simulated device's socket. */
template <auto member>
std::string takeBus(const toml::node& value, const juce::File& folder, Configuration& target)
{
    const auto text = value.value_exact<std::string>().value_or("");
    if (!text.starts_with(simulatedPrefix))
        return resolvePath(value, folder, target.*member);
    const toml::value path { text.substr(simulatedPrefix.size()) };
    auto wanted = resolvePath(path, folder, target.*member);
    if (wanted.empty())
        target.*member = Configuration::simulated + target.*member;
    return wanted;
}

std::string takeLogLibrary(const toml::node& value, const juce::File& folder, Configuration& target)
{
    return textOf(value).containsChar('/') ? takePath<&Configuration::logLibrary>(value, folder, target)
                                           : takeText<&Configuration::logLibrary>(value, folder, target);
}

std::string takeDisplay(const toml::node& value, const juce::File&, Configuration& target)
{
    const auto text = textOf(value);
    if (text != "auto" && text != "none")
        return "\"auto\" or \"none\" is wanted";
    target.display = text;
    return {};
}

std::string takeScreen(const toml::node& value, const juce::File&, Configuration& target)
{
    const auto* sides = value.as_array();
    if (sides == nullptr || sides->size() != 2 || !takeInt(*sides->get(0), 1, maxScreenSide, target.screenWidth) ||
        !takeInt(*sides->get(1), 1, maxScreenSide, target.screenHeight))
        return "[width, height] in pixels, each from 1 to " + std::to_string(maxScreenSide) + ", is wanted";
    return {};
}

std::string takeBaud(const toml::node& value, const juce::File&, Configuration& target)
{
    return takeInt(value, 1, maxBaud, target.mcuBaud) ? "" : wholeNumber(1, maxBaud);
}

struct Key
{
    std::string_view name;
    Take take;
};

constexpr Key keys[] = {
    { "unit.system_path", takeFolder<&Configuration::systemPath> },
    { "unit.resource_path", takeFolder<&Configuration::resourcePath> },
    { "unit.application_path", takeFolder<&Configuration::applicationPath> },
    { "unit.profile_path", takeFolder<&Configuration::profilePath> },
    { "unit.registry_path", takeFolder<&Configuration::registryPath> },
    { "unit.os_version", takeText<&Configuration::osVersion> },
    { "unit.system_debug", takeBool<&Configuration::systemDebug> },
    { "unit.sd_as_usb", takeBool<&Configuration::sdAsUsb> },
    { "unit.media_root", takeFolder<&Configuration::mediaRoot> },
    { "unit.screen", takeScreen },
    { "unit.display", takeDisplay },
    { "unit.camera_hold_file", takePath<&Configuration::cameraHoldFile> },
    { "unit.log_library", takeLogLibrary },
    { "mcu.port", takePath<&Configuration::mcuPort> },
    { "mcu.baud", takeBaud },
    { "wired_remote.port", takePath<&Configuration::wiredRemotePort> },
    { "bus.spi2", takeBus<&Configuration::spi2> },
    { "bus.i2c1", takeBus<&Configuration::i2c1> },
    { "bus.gpio", takeBus<&Configuration::gpio> },
    { "ipc.address", takeText<&Configuration::ipcAddress> },
    { "launch.socket", takePath<&Configuration::launchSocket> },
    { "launch.user", takeText<&Configuration::launchUser> },
    { "update.socket", takePath<&Configuration::updateSocket> },
    { "update.keys", takeFolder<&Configuration::updateKeys> },
};

/** The tables whose keys are numbers or page names. The answer is as that of Take. */
std::string takeGpioLine(std::string_view key, const toml::node& value, Configuration& target)
{
    int unitLine = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), unitLine);
    if (error != std::errc {} || end != key.data() + key.size() || unitLine < 0 || unitLine > maxLine)
        return "the name of a line is " + wholeNumber(0, maxLine);
    return takeInt(value, 0, maxLine, target.gpioLines[unitLine]) ? "" : wholeNumber(0, maxLine);
}

std::string takeProgram(std::string_view key, const toml::node& value, const juce::File& folder,
                        std::map<int, juce::String>& programs)
{
    const auto page = Pubhead::pageOfName(std::string(key).c_str());
    if (page == Pubhead::NUM_OF_PAGES)
        return "there is no page of this name";
    return resolvePath(value, folder, programs[page]);
}

std::string takeBackgroundProgram(std::string_view key, const toml::node& value, const juce::File& folder,
                                  Configuration& target)
{
    const auto keepsOne = [key](int page) { return key == Pubhead::pageName(page); };
    if (std::ranges::any_of(backgroundPages, keepsOne))
        return takeProgram(key, value, folder, target.backgroundPrograms);
    std::string wanted = "only these pages keep a program in the background:";
    for (const int page : backgroundPages)
        wanted += std::string(" ") + Pubhead::pageName(page);
    return wanted;
}

std::string take(const std::string& section, std::string_view key, const toml::node& value, const juce::File& folder,
                 Configuration& target)
{
    if (section == "gpio_lines")
        return takeGpioLine(key, value, target);
    if (section == "programs")
        return takeProgram(key, value, folder, target.programs);
    if (section == "background_programs")
        return takeBackgroundProgram(key, value, folder, target);

    const auto name = section + "." + std::string(key);
    const auto* known = std::ranges::find(keys, name, &Key::name);
    return known == std::end(keys) ? "unknown key" : known->take(value, folder, target);
}

bool isSection(std::string_view name)
{
    return name == "gpio_lines" || name == "programs" || name == "background_programs" ||
           std::ranges::any_of(keys, [name](const Key& key) { return key.name.substr(0, key.name.find('.')) == name; });
}

std::string problem(const juce::String& path, const toml::source_region& source, const std::string& text)
{
    const auto line = source.begin ? ":" + std::to_string(source.begin.line) : std::string {};
    auto result = path.toStdString() + line + ": " + text;
    std::ranges::replace(result, '\n', ' ');
    return result;
}

/** Takes every key of the file; the answer is the first problem, "" when there is none. */
std::string takeAll(const juce::String& path, const juce::File& folder, const toml::table& file, Configuration& target)
{
    for (const auto& [sectionKey, sectionNode] : file)
    {
        const std::string section { sectionKey.str() };
        if (!isSection(section))
            return problem(path, sectionKey.source(), section + ": unknown key");
        const auto* table = sectionNode.as_table();
        if (table == nullptr)
            return problem(path, sectionNode.source(), section + ": a table is wanted");
        for (const auto& [key, value] : *table)
        {
            const auto wanted = take(section, key.str(), value, folder, target);
            if (!wanted.empty())
                return problem(path, key.source(), section + "." + std::string(key.str()) + ": " + wanted);
        }
    }
    return {};
}

/** VERSION_ID of the operating system, or its full name where it has no version; "" when nothing tells it. */
juce::String readOsVersion()
{
    juce::String fullName;
    std::ifstream file("/etc/os-release");
    for (std::string line; std::getline(file, line);)
    {
        const juce::String text(line);
        const auto value = text.fromFirstOccurrenceOf("=", false, false).trim().unquoted();
        if (text.startsWith("VERSION_ID="))
            return value;
        if (text.startsWith("PRETTY_NAME="))
            fullName = value;
    }
    return fullName;
}

} // namespace

std::string Configuration::load(const juce::String& path)
{
    const auto file = juce::File::getCurrentWorkingDirectory().getChildFile(path);
    return file.existsAsFile() ? loadText(path, file.loadFileAsString())
                               : path.toStdString() + ": there is no such file";
}

std::string Configuration::loadText(const juce::String& path, const juce::String& text)
{
    const auto file = juce::File::getCurrentWorkingDirectory().getChildFile(path);
    Configuration loaded;
    try
    {
        const auto content = toml::parse(text.toStdString(), file.getFullPathName().toStdString());
        auto found = takeAll(path, file.getParentDirectory(), content, loaded);
        if (!found.empty())
            return found;
    }
    catch (const toml::parse_error& error)
    {
        return problem(path, error.source(), std::string(error.description()));
    }
    if (loaded.osVersion.isEmpty())
        loaded.osVersion = readOsVersion();
    get() = std::move(loaded);
    return {};
}

std::vector<std::string> Configuration::keyNames()
{
    std::vector<std::string> names;
    for (const auto& key : keys)
        names.emplace_back(key.name);
    return names;
}

Configuration& Configuration::get()
{
    static Configuration configuration;
    return configuration;
}

} // namespace Platform
