#pragma once

#include "platform/base/Bundle.h"

namespace Platform
{

/** One message; pooled. A receiver owns it from the call on, and recycles it when it is done. */
class RemoteMessage : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<RemoteMessage>;

    juce::int32 what = 0;
    juce::int32 arg1 = 0;
    juce::int32 arg2 = 0;
    Bundle::Ptr bundle;
    /** On receipt the sending program (AppType) as the bus names it; 0 is the engine. */
    juce::int32 appType = 0;

    /** A message with empty fields, from the pool or new. Any thread. */
    static Ptr obtain();
    /**
        Back to the pool (at most 50 are kept) when the reference handed over (`std::move`) is the last one. Any thread.
    */
    static void recycle(Ptr message);
    /** The same for the one reference that somebody else holds. */
    virtual void giveBack();
};

/** Receiver of the channel's traffic. Every call comes from the channel's delivery thread. */
class IMsgProc
{
public:
    virtual ~IMsgProc() = default;
    virtual void onRemoteMessage(RemoteMessage::Ptr message) = 0;
    virtual void onWindowMessage(juce::int32 message, juce::int32 wParam, juce::int32 lParam) = 0;
    /** True while the receiver has enough window messages to handle: further ones wait, at most the newest 1024. */
    virtual bool isBusy() const { return false; }
    /** A program's name got or lost its owner on the bus. */
    virtual void onPresence(int appType, bool present) = 0;
    /** An application-wide broadcast text ("showWindow", "hideWindow"). */
    virtual void onBroadcast(const juce::String& text) = 0;
};

} // namespace Platform
