#pragma once

#include "platform/base/Bundle.h"

/** The message channel between the engine and the source programs. */
namespace Platform
{

/** One message; pooled. A receiver owns it from the call on and recycles it once it is done. */
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
    /** Back to the pool (at most 50 are kept) when the reference handed over (`std::move`) is the last one. Any thread.
     */
    static void recycle(Ptr message);
};

/** Receiver of the channel's traffic. Every call comes from the channel's delivery thread. */
class IMsgProc
{
public:
    virtual ~IMsgProc() = default;
    virtual void onRemoteMessage(RemoteMessage::Ptr message) = 0;
    virtual void onWindowMessage(juce::int32 message, juce::int32 wParam, juce::int32 lParam) = 0;
    /** True when it has enough window messages to deal with: the next ones wait, the newest of them. */
    virtual bool isBusy() const { return false; }
    /** A program's name got or lost its owner on the bus. */
    virtual void onPresence(int appType, bool present) = 0;
    /** An application-wide broadcast text ("showWindow", "hideWindow"). */
    virtual void onBroadcast(const juce::String& text) = 0;
};

/** An endpoint of this process. At most one is open. */
class MsgSession
{
public:
    MsgSession() = default;
    ~MsgSession(); ///< closes; no call to the receiver runs after it returns

    /** Owns the endpoint's name and starts delivery. False when the bus cannot be reached now; it goes on trying. */
    bool init(IMsgProc* receiver);
    void close();

private:
    bool open = false;
    JUCE_DECLARE_NON_COPYABLE(MsgSession)
};

namespace IPCMsg
{

/** All callable from any thread; none waits for a peer. */
struct MessageHelper
{
    /** Once before MsgSession::init: this process's application type and the resolver of endpoint names. */
    static void config(int selfIndex, const char* (*nameOf)(int));
    /** Endpoint name of a program ("AppRadio"), also the title of its top-level window. "" for an invalid type. */
    static const char* getDestName(int appType);
    /** False when the program's name has no owner or the bus is away. */
    static bool postMessage(int appType, const RemoteMessage::Ptr& message);
    static bool broadcastMessage(const RemoteMessage::Ptr& message);
    /** Named broadcast ("com.corvane.SystemInfo") with a bundle. */
    static bool sendBroadcast(const juce::String& action, const Bundle::Ptr& bundle);

    static bool isPresent(int appType);
    /** Process that owns the program's name, -1 when nobody does. */
    static int ownerProcess(int appType);
    /**
        The engine started this program: from now on only that process or a descendant of it may speak under the
        program's name. -1 takes the restriction back.
    */
    static void expectProcess(int appType, int pid);
};

} // namespace IPCMsg

} // namespace Platform
