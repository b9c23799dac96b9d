#include "platform/settings/SetupValues.h"

#include "platform/base/Logger.h"
#include "platform/base/Utf8.h"
#include "platform/config/Configuration.h"

#include <charconv>
#include <limits>
#include <toml++/toml.h>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/SetupValues", "SetupStore" };

constexpr char intType = 'i';
constexpr char textType = 's';

} // namespace

std::string encodeSetup(juce::int32 value)
{
    std::string result(1, intType);
    for (int shift = 0; shift < 32; shift += 8)
        result += static_cast<char>(static_cast<juce::uint32>(value) >> shift);
    return result;
}

std::string encodeSetup(const std::string& text)
{
    return textType + text;
}

std::optional<juce::int32> decodeSetupInt(const std::string& value)
{
    if (value.size() != 1 + sizeof(juce::int32) || value.front() != intType)
        return {};
    return static_cast<juce::int32>(juce::ByteOrder::littleEndianInt(value.data() + 1));
}

std::optional<juce::String> decodeSetupText(const std::string& value)
{
    if (value.empty() || value.front() != textType ||
        !juce::CharPointer_UTF8::isValidString(value.data() + 1, static_cast<int>(value.size()) - 1))
        return {};
    return textOfUtf8(std::string_view(value).substr(1));
}

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
                logger().error("%s:%u: not a setting index", path.c_str(), key.source().begin.line);
            else if (number && *number >= std::numeric_limits<juce::int32>::min() &&
                     *number <= std::numeric_limits<juce::int32>::max())
                values[index] = encodeSetup(static_cast<juce::int32>(*number));
            else if (text && text->size() <= longestSetupText)
                values[index] = encodeSetup(*text);
            else
                logger().error("%s:%u: setting %d: a 32-bit number or a text is wanted", path.c_str(),
                               key.source().begin.line, index);
        }
    }
    catch (const toml::parse_error& error)
    {
        logger().error("%s:%u: %s", path.c_str(), error.source().begin.line, std::string(error.description()).c_str());
        return {};
    }
    if (values.empty())
        logger().error("%s: no factory values", path.c_str());
    return values;
}

} // namespace Platform
