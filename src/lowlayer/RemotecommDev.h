#pragma once

#include "kernel/Singleton.h"
#include "lowlayer/ClientCallBack.h"
#include "platform/base/Threads.h"
#include "platform/channel/Ipc.h"

#include <atomic>
#include <memory>

namespace LowLayer
{

/**
    The engine's endpoint on the message channel. What arrives goes to the one client, on the channel's delivery thread;
    posting is allowed from any thread.
*/
class RemotecommDev : public Platform::IMsgProc, public Kernel::Singleton<RemotecommDev>
{
public:
    /** Null clears it; no call to the former client runs after this returns, unless it is made from one. */
    void setClient(ClientCallBack* newClient);

    /** False, and logged, when the program cannot be reached. */
    bool postToApp(int appType, const Platform::RemoteMessage::Ptr& message);

    void onRemoteMessage(Platform::RemoteMessage::Ptr message) override;
    void onWindowMessage(juce::int32 message, juce::int32 wParam, juce::int32 lParam) override;
    /** True while 256 window messages or more wait for their components. */
    bool isBusy() const override;
    /** A gained name registers its program with the client, a lost one unregisters it. */
    void onPresence(int appType, bool present) override;
    void onBroadcast(const juce::String& text) override;

private:
    friend class Kernel::Singleton<RemotecommDev>;
    RemotecommDev();

    void tellClient(RemoteDataKind kind, int appType, juce::ReferenceCountedObject* data);
    class CountedMessage;
    using Count = std::shared_ptr<std::atomic<int>>;
    const Count unhandled = std::make_shared<std::atomic<int>>(0);

    Platform::Mutex clientLock;
    ClientCallBack* client = nullptr;
    Platform::MsgSession session; ///< last: it ends before what its calls use
};

} // namespace LowLayer
