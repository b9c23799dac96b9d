#pragma once

#include <juce_core/juce_core.h>
#include <map>
#include <variant>
#include <vector>

namespace Platform
{

/** A key/value bag, the structured payload of a remote message. Not shared between threads while it is filled. */
class Bundle : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<Bundle>;
    using Value = std::variant<juce::int32, bool, juce::String, juce::MemoryBlock, Ptr, std::vector<Ptr>>;

    static Ptr obtain() { return new Bundle(); }

    void putInt(const juce::String& key, juce::int32 value);
    void putBool(const juce::String& key, bool value);
    void putString(const juce::String& key, const juce::String& value);
    void putByteArray(const juce::String& key, const void* data, int length);
    void putBundle(const juce::String& key, Ptr value);
    void putBundleList(const juce::String& key, std::vector<Ptr> value);

    /** The default (null, empty) when the key is absent or holds another type. */
    juce::int32 getInt(const juce::String& key, juce::int32 fallback) const;
    bool getBool(const juce::String& key, bool fallback) const;
    juce::String getString(const juce::String& key, const juce::String& fallback) const;
    juce::MemoryBlock getByteArray(const juce::String& key) const;
    Ptr getBundle(const juce::String& key) const;
    std::vector<Ptr> getBundleList(const juce::String& key) const;

    bool isEmpty() const { return values.empty(); }
    const std::map<juce::String, Value>& getValues() const { return values; }

private:
    template <typename T>
    const T* find(const juce::String& key) const;
    std::map<juce::String, Value> values;
};

} // namespace Platform
