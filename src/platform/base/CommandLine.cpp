#include "platform/base/CommandLine.h"

#include "platform/base/BundleKeys.h"
#include "platform/base/Pubhead.h"

#include <algorithm>
#include <array>
#include <limits>
#include <nlohmann/json.hpp>

namespace Platform
{

namespace
{

using namespace BundleKeys;

/** In the order of AppCommandLine::Type. */
constexpr std::array typeNames {
#define BUNDLE_KEY(name, text, type, meaning)
#define COMMAND_LINE(type, meaning) #type,
#include "platform/base/BundleKeys.def"
#undef BUNDLE_KEY
#undef COMMAND_LINE
};
static_assert(typeNames.size() == static_cast<std::size_t>(AppCommandLine::Type::sourceExit) + 1);

/** Deeper than any page's handler nests its data; what lies below is left out. */
constexpr int maxDepth = 32;

nlohmann::json toJson(const Bundle& bundle);

struct ValueToJson
{
    nlohmann::json operator()(juce::int32 value) const { return value; }
    nlohmann::json operator()(bool value) const { return value; }
    nlohmann::json operator()(const juce::String& value) const { return value.toStdString(); }
    nlohmann::json operator()(const juce::MemoryBlock& value) const
    {
        auto bytes = nlohmann::json::array();
        for (const auto each : value)
            bytes.push_back(static_cast<std::uint8_t>(each));
        return bytes;
    }
    nlohmann::json operator()(const Bundle::Ptr& value) const { return toJson(*value); }
    nlohmann::json operator()(const std::vector<Bundle::Ptr>& value) const
    {
        auto list = nlohmann::json::array();
        for (const auto& each : value)
            list.push_back(toJson(*each));
        return list;
    }
};

nlohmann::json toJson(const Bundle& bundle)
{
    auto object = nlohmann::json::object();
    for (const auto& [key, value] : bundle.getValues())
        object[key.toStdString()] = std::visit(ValueToJson(), value);
    return object;
}

Bundle::Ptr toBundle(const nlohmann::json& object, int depth);

bool isByte(const nlohmann::json& value)
{
    return value.is_number_integer() && value >= 0 && value <= std::numeric_limits<std::uint8_t>::max();
}

/** What a bundle cannot hold is left out. */
void putValue(Bundle& bundle, const juce::String& key, const nlohmann::json& value, int depth)
{
    if (value.is_boolean())
        bundle.putBool(key, value.get<bool>());
    else if (value.is_number_integer())
    {
        using Limits = std::numeric_limits<juce::int32>;
        if (value >= Limits::min() && value <= Limits::max())
            bundle.putInt(key, value.get<juce::int32>());
    }
    else if (value.is_string())
        bundle.putString(key, juce::String::fromUTF8(value.get_ref<const std::string&>().c_str()));
    else if (value.is_object())
        bundle.putBundle(key, toBundle(value, depth + 1));
    else if (value.is_array() && std::all_of(value.begin(), value.end(), isByte))
    {
        const auto bytes = value.get<std::vector<std::uint8_t>>();
        bundle.putByteArray(key, bytes.data(), static_cast<int>(bytes.size()));
    }
    else if (value.is_array() &&
             std::all_of(value.begin(), value.end(), [](const auto& each) { return each.is_object(); }))
    {
        std::vector<Bundle::Ptr> list;
        std::transform(value.begin(), value.end(), std::back_inserter(list),
                       [&](const auto& each) { return toBundle(each, depth + 1); });
        bundle.putBundleList(key, std::move(list));
    }
}

Bundle::Ptr toBundle(const nlohmann::json& object, int depth)
{
    if (depth > maxDepth)
        return nullptr;
    const auto bundle = Bundle::obtain();
    for (const auto& [key, value] : object.items())
        putValue(*bundle, juce::String::fromUTF8(key.c_str()), value, depth);
    return bundle;
}

bool isPageOrNone(int page)
{
    return page >= 0 && page <= Pubhead::NUM_OF_PAGES;
}

template <typename T>
bool holds(const Bundle::Ptr& bundle)
{
    if (bundle == nullptr)
        return false;
    const auto found = bundle->getValues().find(valueKey);
    return found != bundle->getValues().end() && std::holds_alternative<T>(found->second);
}

} // namespace

AppCommandLine::Ptr AppCommandLine::make(Type type, int page)
{
    Ptr commandLine = new AppCommandLine;
    commandLine->type = type;
    commandLine->page = page;
    return commandLine;
}

AppCommandLine::Ptr AppCommandLine::genCmdPageShow(int page, bool flag)
{
    auto commandLine = make(Type::pageShow, page);
    commandLine->flag = flag;
    return commandLine;
}

AppCommandLine::Ptr AppCommandLine::genCmdPageHide(int page, int otherPage)
{
    auto commandLine = make(Type::pageHide, page);
    commandLine->otherPage = otherPage;
    return commandLine;
}

AppCommandLine::Ptr AppCommandLine::genCmdSourceEnter(int page, bool flag, bool onTop)
{
    auto commandLine = make(Type::sourceEnter, page);
    commandLine->flag = flag;
    commandLine->onTop = onTop;
    return commandLine;
}

AppCommandLine::Ptr AppCommandLine::genCmdSourceExit(int page, int otherPage)
{
    auto commandLine = make(Type::sourceExit, page);
    commandLine->otherPage = otherPage;
    return commandLine;
}

Bundle::Ptr RemoteObjFormat::formatCommandLine(const AppCommandLine& commandLine)
{
    const auto fields = Bundle::obtain();
    fields->putString(typeKey, typeNames[static_cast<std::size_t>(commandLine.getType())]);
    fields->putInt(pageKey, commandLine.getPage());
    if (commandLine.isPageShow() || commandLine.isSourceEnter())
        fields->putBool(flagKey, commandLine.getFlag());
    else
        fields->putInt(otherPageKey, commandLine.getOtherPage());
    if (commandLine.isSourceEnter())
        fields->putBool(onTopKey, commandLine.isOnTop());
    if (commandLine.hasExtraData())
        fields->putBundle(extraKey, commandLine.getExtraData());
    const auto bundle = Bundle::obtain();
    bundle->putBundle(commandLineKey, fields);
    return bundle;
}

AppCommandLine::Ptr RemoteObjFormat::generateCommandLine(const Bundle::Ptr& bundle)
{
    const auto fields = bundle == nullptr ? nullptr : bundle->getBundle(commandLineKey);
    if (fields == nullptr)
        return nullptr;
    const auto name = fields->getString(typeKey, {});
    const auto type = std::find(typeNames.begin(), typeNames.end(), name) - typeNames.begin();
    const int page = fields->getInt(pageKey, -1);
    const int otherPage = fields->getInt(otherPageKey, Pubhead::NUM_OF_PAGES);
    if (!isPageOrNone(page) || !isPageOrNone(otherPage))
        return nullptr;
    const bool flag = fields->getBool(flagKey, false);
    AppCommandLine::Ptr commandLine;
    switch (static_cast<AppCommandLine::Type>(type))
    {
    case AppCommandLine::Type::pageShow:
        commandLine = AppCommandLine::genCmdPageShow(page, flag);
        break;
    case AppCommandLine::Type::pageHide:
        commandLine = AppCommandLine::genCmdPageHide(page, otherPage);
        break;
    case AppCommandLine::Type::sourceEnter:
        commandLine = AppCommandLine::genCmdSourceEnter(page, flag, fields->getBool(onTopKey, false));
        break;
    case AppCommandLine::Type::sourceExit:
        commandLine = AppCommandLine::genCmdSourceExit(page, otherPage);
        break;
    default:
        return nullptr;
    }
    commandLine->putExtraData(fields->getBundle(extraKey));
    return commandLine;
}

Bundle::Ptr RemoteObjFormat::formatInt(juce::int32 value)
{
    const auto bundle = Bundle::obtain();
    bundle->putInt(valueKey, value);
    return bundle;
}

Bundle::Ptr RemoteObjFormat::formatString(const juce::String& value)
{
    const auto bundle = Bundle::obtain();
    bundle->putString(valueKey, value);
    return bundle;
}

Bundle::Ptr RemoteObjFormat::formatByteArray(const void* data, int length)
{
    const auto bundle = Bundle::obtain();
    bundle->putByteArray(bytesKey, data, length);
    return bundle;
}

juce::int32 RemoteObjFormat::getInt(const Bundle::Ptr& bundle, juce::int32 fallback)
{
    return bundle == nullptr ? fallback : bundle->getInt(valueKey, fallback);
}

juce::String RemoteObjFormat::getString(const Bundle::Ptr& bundle, const juce::String& fallback)
{
    return bundle == nullptr ? fallback : bundle->getString(valueKey, fallback);
}

bool RemoteObjFormat::holdsInt(const Bundle::Ptr& bundle)
{
    return holds<juce::int32>(bundle);
}

bool RemoteObjFormat::holdsString(const Bundle::Ptr& bundle)
{
    return holds<juce::String>(bundle);
}

juce::MemoryBlock RemoteObjFormat::getByteArray(const Bundle::Ptr& bundle)
{
    return bundle == nullptr ? juce::MemoryBlock() : bundle->getByteArray(bytesKey);
}

Bundle::Ptr RemoteObjFormat::formatMessageBodyList(const std::vector<MessageBody>& bodies)
{
    std::vector<Bundle::Ptr> list;
    for (const auto& body : bodies)
    {
        auto entry = Bundle::obtain();
        entry->putInt(kindKey, body.kind);
        entry->putInt(keyKey, body.key);
        entry->putInt(valueKey, body.value);
        if (!body.bytes.isEmpty())
            entry->putByteArray(bytesKey, body.bytes.getData(), static_cast<int>(body.bytes.getSize()));
        list.push_back(std::move(entry));
    }
    const auto bundle = Bundle::obtain();
    bundle->putBundleList(bodiesKey, std::move(list));
    return bundle;
}

juce::String CmdLineHelper::genCommandLine(const Bundle::Ptr& bundle)
{
    if (RemoteObjFormat::generateCommandLine(bundle) == nullptr)
        return {};
    // Text that is not UTF-8 is replaced rather than refused.
    return juce::String::fromUTF8(
        toJson(*bundle).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

Bundle::Ptr CmdLineHelper::parseCommandLine(const juce::String& json)
{
    const auto parsed = nlohmann::json::parse(json.toStdString(), nullptr, false);
    if (!parsed.is_object())
        return nullptr;
    const auto bundle = toBundle(parsed, 0);
    return RemoteObjFormat::generateCommandLine(bundle) == nullptr ? nullptr : bundle;
}

} // namespace Platform
