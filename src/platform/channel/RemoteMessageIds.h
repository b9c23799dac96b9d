#pragma once

#include <juce_core/juce_core.h>

namespace Platform
{

/** Messages between the engine and the source programs. RemoteMessages.def says who sends them when. */
enum RemoteMessageId : juce::int32 {
#define REMOTE_MESSAGE(name, number, direction, arg1, arg2, bundle, meaning, expected) name = number,
#define REMOTE_CODE(message, argument, name, number, meaning)
#include "platform/channel/RemoteMessages.def"
#undef REMOTE_MESSAGE
#undef REMOTE_CODE
};

/** Values of their arguments. */
enum RemoteCode : juce::int32 {
#define REMOTE_MESSAGE(name, number, direction, arg1, arg2, bundle, meaning, expected)
#define REMOTE_CODE(message, argument, name, number, meaning) name = number,
#include "platform/channel/RemoteMessages.def"
#undef REMOTE_MESSAGE
#undef REMOTE_CODE
};

/** "RMSG_APP_EVENT"; "RMSG 7" for a number that nobody has named. Any thread. */
juce::String remoteMessageName(juce::int32 what);

} // namespace Platform
