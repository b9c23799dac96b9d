#pragma once

#include "platform/base/Bundle.h"

namespace Platform
{

/** A command line tells a program to show or hide a page or to enter or leave its source. */
class AppCommandLine : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<AppCommandLine>;

    enum class Type { pageShow, pageHide, sourceEnter, sourceExit };

    static Ptr genCmdPageShow(int page, bool flag);
    static Ptr genCmdPageHide(int page, int otherPage);
    static Ptr genCmdSourceEnter(int page, bool flag, bool onTop);
    static Ptr genCmdSourceExit(int page, int otherPage);

    bool isPageShow() const { return type == Type::pageShow; }
    bool isPageHide() const { return type == Type::pageHide; }
    bool isSourceEnter() const { return type == Type::sourceEnter; }
    bool isSourceExit() const { return type == Type::sourceExit; }
    /** True when the page comes to the front: a page-show, or a source-enter that is on top. */
    bool isFrontShow() const { return isPageShow() || (isSourceEnter() && onTop); }

    Type getType() const { return type; }
    int getPage() const { return page; }
    bool getFlag() const { return flag; }
    bool isOnTop() const { return onTop; }
    int getOtherPage() const { return otherPage; }

    /** What the page's handler attached; null when nothing was. Putting replaces it. */
    void putExtraData(Bundle::Ptr data) { extra = std::move(data); }
    Bundle::Ptr getExtraData() const { return extra; }
    bool hasExtraData() const { return extra != nullptr && !extra->isEmpty(); }

private:
    static Ptr make(Type type, int page);

    Type type = Type::pageShow;
    int page = 0;
    bool flag = false;
    bool onTop = false;
    int otherPage = 0;
    Bundle::Ptr extra;
};

/** Conversions between payloads and the bundles that carry them. Keys and types are those of the message channel. */
struct RemoteObjFormat
{
    /** {"commandLine": {...}}. */
    static Bundle::Ptr formatCommandLine(const AppCommandLine& commandLine);
    /** Null when the bundle is null or holds no well-formed command line. */
    static AppCommandLine::Ptr generateCommandLine(const Bundle::Ptr& bundle);

    /** One value under the key "value". */
    static Bundle::Ptr formatInt(juce::int32 value);
    static Bundle::Ptr formatString(const juce::String& value);
    /** Bytes under the key "bytes". */
    static Bundle::Ptr formatByteArray(const void* data, int length);
    static juce::int32 getInt(const Bundle::Ptr& bundle, juce::int32 fallback = 0);
    static juce::String getString(const Bundle::Ptr& bundle, const juce::String& fallback = {});
    static juce::MemoryBlock getByteArray(const Bundle::Ptr& bundle);
    /** Whether there is one such value. */
    static bool holdsInt(const Bundle::Ptr& bundle);
    static bool holdsString(const Bundle::Ptr& bundle);

    /** One entry of a message list: `bytes` only for data bodies. */
    struct MessageBody
    {
        juce::int32 kind = 0;
        juce::int32 key = 0;
        juce::int32 value = 0;
        juce::MemoryBlock bytes;
    };
    /** {"bodies": [...]}. */
    static Bundle::Ptr formatMessageBodyList(const std::vector<MessageBody>& bodies);
};

struct CmdLineHelper
{
    /** The command line in the bundle as JSON, the value of a program's `--command-line`; "" when there is none. */
    static juce::String genCommandLine(const Bundle::Ptr& bundle);
    /** The reverse, for programs: null when the text is not such JSON. */
    static Bundle::Ptr parseCommandLine(const juce::String& json);
};

} // namespace Platform
