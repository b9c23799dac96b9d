#pragma once

#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessage.h"

/** The message channel between the engine and the source programs. */
namespace Platform
{

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
    static const char* getDestName(int appType) { return Pubhead::appTypeName(appType); }
    /** False when the program's name has no owner or the bus is away. */
    static bool postMessage(int appType, const RemoteMessage::Ptr& message);
    static bool broadcastMessage(const RemoteMessage::Ptr& message);
    /** Named broadcast ("com.corvane.SystemInfo") with a bundle. */
    static bool sendBroadcast(const juce::String& action, const Bundle::Ptr& bundle);

    /** The configured bus, else that of the session; "" for none. */
    static std::string busAddress();
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
