#include "platform/channel/linux/IpcWire.h"

#include <string_view>

namespace Platform::IpcWire
{

namespace
{

constexpr const char* dictionary = "a{sv}";
constexpr const char* dictionaryList = "aa{sv}";
constexpr const char* dictionaryEntry = "{sv}";

/** What the bus takes as a character: no surrogates, no non-characters. One that is not would cost the connection. */
bool isWireCharacter(juce::juce_wchar character)
{
    const auto code = static_cast<juce::uint32>(character);
    return code != 0 && code < 0x110000 && (code & 0xfffff800) != 0xd800 && (code & 0xfffe) != 0xfffe &&
           !(code >= 0xfdd0 && code <= 0xfdef);
}

std::string wireText(const juce::String& text)
{
    constexpr juce::juce_wchar replacement = 0xfffd;
    const std::string_view raw(text.toRawUTF8());
    if (std::all_of(raw.begin(), raw.end(), [](char each) { return static_cast<signed char>(each) > 0; }))
        return std::string(raw);
    juce::String valid;
    for (auto position = text.getCharPointer(); !position.isEmpty();)
    {
        const auto character = position.getAndAdvance();
        valid += isWireCharacter(character) ? character : replacement;
    }
    return valid.toStdString();
}

int appendDictionary(sd_bus_message* target, const Bundle& bundle);

/** Appends one value as a variant. */
struct AppendVariant
{
    sd_bus_message* target;

    int operator()(juce::int32 value) const { return sd_bus_message_append(target, "v", "i", value); }
    int operator()(bool value) const { return sd_bus_message_append(target, "v", "b", value ? 1 : 0); }
    int operator()(const juce::String& value) const
    {
        return sd_bus_message_append(target, "v", "s", wireText(value).c_str());
    }
    int operator()(const juce::MemoryBlock& value) const
    {
        return inVariant("ay",
                         [&] { return sd_bus_message_append_array(target, 'y', value.getData(), value.getSize()); });
    }
    int operator()(const Bundle::Ptr& value) const
    {
        return inVariant(dictionary, [&] { return appendDictionary(target, *value); });
    }
    int operator()(const std::vector<Bundle::Ptr>& value) const
    {
        return inVariant(dictionaryList,
                         [&]
                         {
                             int result = sd_bus_message_open_container(target, 'a', dictionary);
                             for (auto each = value.begin(); result >= 0 && each != value.end(); ++each)
                                 result = appendDictionary(target, **each);
                             return result < 0 ? result : sd_bus_message_close_container(target);
                         });
    }

private:
    template <typename Content>
    int inVariant(const char* type, Content&& content) const
    {
        if (const int result = sd_bus_message_open_container(target, 'v', type); result < 0)
            return result;
        if (const int result = content(); result < 0)
            return result;
        return sd_bus_message_close_container(target);
    }
};

int appendEntry(sd_bus_message* target, const juce::String& key, const Bundle::Value& value)
{
    if (const int result = sd_bus_message_open_container(target, 'e', "sv"); result < 0)
        return result;
    if (const int result = sd_bus_message_append_basic(target, 's', wireText(key).c_str()); result < 0)
        return result;
    if (const int result = std::visit(AppendVariant { target }, value); result < 0)
        return result;
    return sd_bus_message_close_container(target);
}

int appendDictionary(sd_bus_message* target, const Bundle& bundle)
{
    if (const int result = sd_bus_message_open_container(target, 'a', dictionaryEntry); result < 0)
        return result;
    for (const auto& [key, value] : bundle.getValues())
        if (const int result = appendEntry(target, key, value); result < 0)
            return result;
    return sd_bus_message_close_container(target);
}

int readList(sd_bus_message* source, std::vector<Bundle::Ptr>& list)
{
    if (const int result = sd_bus_message_enter_container(source, 'a', dictionary); result < 0)
        return result;
    for (;;)
    {
        const int atEnd = sd_bus_message_at_end(source, 0);
        if (atEnd < 0)
            return atEnd;
        if (atEnd > 0)
            return sd_bus_message_exit_container(source);
        Bundle::Ptr each;
        if (const int result = read(source, each); result < 0)
            return result;
        list.push_back(std::move(each));
    }
}

/** Inside a variant of the given type. */
int readValue(sd_bus_message* source, std::string_view type, const juce::String& key, Bundle& bundle)
{
    int result = 0;
    if (type == "i" || type == "b")
    {
        int value = 0;
        result = sd_bus_message_read_basic(source, type.front(), &value);
        if (type == "i")
            bundle.putInt(key, value);
        else
            bundle.putBool(key, value != 0);
    }
    else if (type == "s")
    {
        const char* value = "";
        result = sd_bus_message_read_basic(source, 's', &value);
        bundle.putString(key, juce::String::fromUTF8(value));
    }
    else if (type == "ay")
    {
        const void* data = nullptr;
        std::size_t size = 0;
        result = sd_bus_message_read_array(source, 'y', &data, &size);
        bundle.putByteArray(key, data, static_cast<int>(size));
    }
    else if (type == dictionary)
    {
        Bundle::Ptr value;
        result = read(source, value);
        bundle.putBundle(key, value);
    }
    else
    {
        std::vector<Bundle::Ptr> value;
        result = readList(source, value);
        bundle.putBundleList(key, std::move(value));
    }
    return result;
}

bool isBundleType(std::string_view type)
{
    return type == "i" || type == "b" || type == "s" || type == "ay" || type == dictionary || type == dictionaryList;
}

int readEntry(sd_bus_message* source, Bundle& bundle)
{
    const char* key = "";
    if (const int result = sd_bus_message_read_basic(source, 's', &key); result < 0)
        return result;
    const char* type = "";
    if (const int result = sd_bus_message_peek_type(source, nullptr, &type); result < 0)
        return result;
    if (!isBundleType(type))
        return sd_bus_message_skip(source, "v");
    // The type text belongs to the message and moves on with it.
    const std::string valueType(type);
    if (const int result = sd_bus_message_enter_container(source, 'v', valueType.c_str()); result < 0)
        return result;
    if (const int result = readValue(source, valueType, juce::String::fromUTF8(key), bundle); result < 0)
        return result;
    return sd_bus_message_exit_container(source);
}

} // namespace

int append(sd_bus_message* target, const Bundle::Ptr& bundle)
{
    return appendDictionary(target, bundle == nullptr ? Bundle() : *bundle);
}

int append(sd_bus_message* target, const RemoteMessage& message)
{
    if (const int result = sd_bus_message_append(target, "iii", message.what, message.arg1, message.arg2); result < 0)
        return result;
    return append(target, message.bundle);
}

int read(sd_bus_message* source, Bundle::Ptr& bundle)
{
    bundle = Bundle::obtain();
    if (const int result = sd_bus_message_enter_container(source, 'a', dictionaryEntry); result < 0)
        return result;
    for (;;)
    {
        const int entered = sd_bus_message_enter_container(source, 'e', "sv");
        if (entered < 0)
            return entered;
        if (entered == 0)
            return sd_bus_message_exit_container(source);
        if (const int result = readEntry(source, *bundle); result < 0)
            return result;
        if (const int result = sd_bus_message_exit_container(source); result < 0)
            return result;
    }
}

int read(sd_bus_message* source, RemoteMessage& message)
{
    if (const int result = sd_bus_message_read(source, "iii", &message.what, &message.arg1, &message.arg2); result < 0)
        return result;
    if (const int result = read(source, message.bundle); result < 0)
        return result;
    if (message.bundle->isEmpty())
        message.bundle = nullptr;
    return 0;
}

} // namespace Platform::IpcWire
