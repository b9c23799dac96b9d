#pragma once

#include <juce_core/juce_core.h>

namespace LowLayer
{

/** Kinds of `ClientCallBack::onData` of the serial link ... */
inline constexpr int hostBytesReceived = 1;
/** ... and of the remote channel. */
enum RemoteDataKind { MSG_REMOTE_REGIST = 1, MSG_REMOTE_MSG_REV = 2, MSG_REMOTE_FORWARD = 3, MSG_REMOTE_UNREGIST = 4 };

/** Receive interface of the serial link and of the remote channel. */
class ClientCallBack
{
public:
    virtual ~ClientCallBack() = default;
    /**
        Serial link: hostBytesReceived, byte count, the BytePool that holds them; group thread of the link. Remote
        channel: a RemoteDataKind, the program's AppType, the RemoteMessage; delivery thread of the channel.
    */
    virtual void onData(int kind, int source, juce::ReferenceCountedObject* data) = 0;
};

} // namespace LowLayer
