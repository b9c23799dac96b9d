#include "platform/base/Bundle.h"

namespace Platform
{

void Bundle::putInt(const juce::String& key, juce::int32 value)
{
    values.insert_or_assign(key, Value(value));
}

void Bundle::putBool(const juce::String& key, bool value)
{
    values.insert_or_assign(key, Value(value));
}

void Bundle::putString(const juce::String& key, const juce::String& value)
{
    values.insert_or_assign(key, Value(value));
}

void Bundle::putByteArray(const juce::String& key, const void* data, int length)
{
    values.insert_or_assign(key, Value(juce::MemoryBlock(data, static_cast<std::size_t>(juce::jmax(0, length)))));
}

void Bundle::putBundle(const juce::String& key, Ptr value)
{
    if (value != nullptr)
        values.insert_or_assign(key, Value(std::move(value)));
}

void Bundle::putBundleList(const juce::String& key, std::vector<Ptr> value)
{
    std::erase(value, nullptr);
    values.insert_or_assign(key, Value(std::move(value)));
}

template <typename T>
const T* Bundle::find(const juce::String& key) const
{
    const auto found = values.find(key);
    return found == values.end() ? nullptr : std::get_if<T>(&found->second);
}

juce::int32 Bundle::getInt(const juce::String& key, juce::int32 fallback) const
{
    const auto* value = find<juce::int32>(key);
    return value == nullptr ? fallback : *value;
}

bool Bundle::getBool(const juce::String& key, bool fallback) const
{
    const auto* value = find<bool>(key);
    return value == nullptr ? fallback : *value;
}

juce::String Bundle::getString(const juce::String& key, const juce::String& fallback) const
{
    const auto* value = find<juce::String>(key);
    return value == nullptr ? fallback : *value;
}

juce::MemoryBlock Bundle::getByteArray(const juce::String& key) const
{
    const auto* value = find<juce::MemoryBlock>(key);
    return value == nullptr ? juce::MemoryBlock() : *value;
}

Bundle::Ptr Bundle::getBundle(const juce::String& key) const
{
    const auto* value = find<Ptr>(key);
    return value == nullptr ? nullptr : *value;
}

std::vector<Bundle::Ptr> Bundle::getBundleList(const juce::String& key) const
{
    const auto* value = find<std::vector<Ptr>>(key);
    return value == nullptr ? std::vector<Ptr> {} : *value;
}

} // namespace Platform
