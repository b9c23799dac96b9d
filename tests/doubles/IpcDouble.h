#pragma once

#include "platform/channel/Ipc.h"

#include <functional>
#include <vector>

/**
    The message channel without a bus. A test says which programs are present, reads what was posted to them and plays
    their part. Injected traffic reaches the receiver of the open MsgSession on the calling thread; without an open
    session it is dropped and the call answers false. Any thread.
*/
namespace Platform::IpcDouble
{

/** One message as it was when it was posted; `bundle` is a deep copy, null when there was none. */
struct Posted
{
    int appType = 0; ///< the receiving program; -1 for a broadcast to all
    juce::int32 what = 0;
    juce::int32 arg1 = 0;
    juce::int32 arg2 = 0;
    Bundle::Ptr bundle;
};

struct NamedBroadcast
{
    juce::String action;
    Bundle::Ptr bundle;
};

/** Nobody is present, nothing is recorded, no process is expected. */
void reset();

/** A change is reported to the receiver. `pid` is what `ownerProcess` answers while the program is present. */
void setPresent(int appType, bool present, int pid = -1);
/** Every program, AppMain excepted. */
void setAllPresent(bool present);

/** Everything that was posted (broadcasts to all included) since the last call, in order. */
std::vector<Posted> takePosted();
/** The same to one program; what went to others stays. */
std::vector<Posted> takePosted(int appType);
std::vector<NamedBroadcast> takeNamedBroadcasts();
/**
    Called inside each post, on the posting thread: a program that answers before the engine goes on.
    Empty for none.
*/
void onPost(std::function<void(const Posted&)> program);
/** What `expectProcess` last said of the program, -1 for no restriction. */
int expectedProcess(int appType);

bool injectMessage(int fromAppType, juce::int32 what, juce::int32 arg1 = 0, juce::int32 arg2 = 0,
                   Bundle::Ptr bundle = nullptr);
bool injectWindowMessage(juce::int32 message, juce::int32 wParam, juce::int32 lParam);

} // namespace Platform::IpcDouble
