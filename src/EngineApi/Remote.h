#pragma once

#include "platform/channel/Ipc.h"
#include "platform/channel/RemoteMessageIds.h"

#include <vector>

/** Access to the source programs from everywhere in the engine. Any thread; every call returns at once. */
namespace EngineApi
{

using enum Platform::RemoteMessageId;

/** Connection states of a program; the names are "kDisconnect" ... */
enum ProgramState : int {
    kDisconnect = 0, ///< no process known
    kStarting = 1,   ///< process created, no hello yet
    kConnected = 2,  ///< said hello, or ran already
    kDead = 3,       ///< defined, never entered
    kClosing = 4     ///< told to quit, its process has not ended yet
};
class AppConnectStateInterface
{
public:
    virtual ~AppConnectStateInterface() = default;
    /** Every change of a program's state, on the executable monitor's group thread. */
    virtual void onAppConnectState(int appType, int state) = 0;
};

class RemoteMsgFilterInterface
{
public:
    virtual ~RemoteMsgFilterInterface() = default;
    /** Takes messages of one id instead of the page handler; on the channel's delivery thread. */
    virtual void onFilterMessage(const Platform::RemoteMessage& message) = 0;
};

/**
    True when the message went out; false when it waits for the program to register, or was dropped. AppNavi is not on
    the channel: arg1 and arg2 go as a window message to the window of that title.
*/
bool sendRemoteMessage(int appType, juce::int32 what, juce::int32 arg1, juce::int32 arg2,
                       Platform::Bundle::Ptr bundle = nullptr);
bool sendRemoteMessage(int appType, const Platform::RemoteMessage::Ptr& message);
void broadcastRemoteMessage(juce::int32 what, juce::int32 arg1, juce::int32 arg2);
/** One filter for each id, added while MSG_SYS_START is handled. */
void addRemoteMsgFilter(juce::int32 what, RemoteMsgFilterInterface* filter);
/** True when the program is registered, that is, may be posted to directly. */
bool isAppConnected(int appType);
/** Their application types, ascending. */
std::vector<int> getRegisteredApps();

} // namespace EngineApi
