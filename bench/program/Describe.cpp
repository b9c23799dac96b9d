#include "bench/program/Describe.h"

#include "platform/base/Pubhead.h"

#include <algorithm>

namespace BenchProgram
{

using namespace Platform;

namespace
{

juce::String withBlank(const juce::String& text)
{
    return text.isEmpty() ? text : " " + text;
}

/** A fixed field is filled up with zeros. */
juce::String describeBytes(const juce::MemoryBlock& bytes)
{
    const auto* text = static_cast<const char*>(bytes.getData());
    const auto* end = std::find(text, text + bytes.getSize(), '\0');
    const bool isText = end != text && std::all_of(text, end, [](char c) { return c >= ' ' && c <= '~'; }) &&
                        std::all_of(end, text + bytes.getSize(), [](char c) { return c == '\0'; });
    return isText ? juce::String(text, static_cast<std::size_t>(end - text)).quoted()
                  : "<" + juce::String::toHexString(bytes.getData(), static_cast<int>(bytes.getSize())) + ">";
}

struct ValueText
{
    juce::String operator()(juce::int32 value) const { return juce::String(value); }
    juce::String operator()(bool value) const { return value ? "true" : "false"; }
    juce::String operator()(const juce::String& value) const { return value.quoted(); }
    juce::String operator()(const juce::MemoryBlock& value) const { return describeBytes(value); }
    juce::String operator()(const Bundle::Ptr& value) const { return describe(value); }
    juce::String operator()(const std::vector<Bundle::Ptr>& list) const
    {
        juce::StringArray texts;
        for (const auto& each : list)
            texts.add(describe(each));
        return "[" + texts.joinIntoString(" ") + "]";
    }
};

} // namespace

juce::String describe(const Bundle::Ptr& bundle)
{
    if (bundle == nullptr || bundle->isEmpty())
        return {};
    juce::StringArray texts;
    for (const auto& [key, value] : bundle->getValues())
        texts.add(key + "=" + std::visit(ValueText(), value));
    return "{" + texts.joinIntoString(" ") + "}";
}

juce::String describe(const AppCommandLine& line)
{
    const juce::String page = Pubhead::pageName(line.getPage());
    const auto extra = withBlank(describe(line.getExtraData()));
    if (line.isPageShow())
        return "pageShow " + page + extra;
    if (line.isSourceEnter())
        return "sourceEnter " + page + (line.isOnTop() ? " onTop" : "") + extra;
    return (line.isPageHide() ? "pageHide " : "sourceExit ") + page + " for " + Pubhead::pageName(line.getOtherPage()) +
           extra;
}

juce::String describe(const RemoteMessage& message)
{
    return juce::String(message.what) + " " + juce::String(message.arg1) + " " + juce::String(message.arg2) +
           withBlank(describe(message.bundle));
}

} // namespace BenchProgram
