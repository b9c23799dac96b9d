#include "platform/channel/RemoteMessageIds.h"

namespace Platform
{

juce::String remoteMessageName(juce::int32 what)
{
    switch (what)
    {
#define REMOTE_MESSAGE(name, number, direction, arg1, arg2, bundle, meaning, expected)                                 \
    case name:                                                                                                         \
        return #name;
#define REMOTE_CODE(message, argument, name, number, meaning)
#include "platform/channel/RemoteMessages.def"
#undef REMOTE_MESSAGE
#undef REMOTE_CODE
    default:
        return "RMSG " + juce::String(what);
    }
}

} // namespace Platform
