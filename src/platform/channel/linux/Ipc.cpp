#include "platform/channel/Ipc.h"

#include "platform/channel/linux/IpcChannel.h"

namespace Platform
{

MsgSession::~MsgSession()
{
    close();
}

bool MsgSession::init(IMsgProc* receiver)
{
    if (receiver == nullptr || open)
        return false;
    open = IpcChannel::get().claim();
    return open && IpcChannel::get().open(*receiver);
}

void MsgSession::close()
{
    if (std::exchange(open, false))
        IpcChannel::get().close();
}

namespace IPCMsg
{

void MessageHelper::config(int selfIndex, const char* (*nameOf)(int))
{
    IpcChannel::get().config(selfIndex, nameOf);
}

bool MessageHelper::postMessage(int appType, const RemoteMessage::Ptr& message)
{
    return message != nullptr && IpcChannel::get().post(appType, message);
}

bool MessageHelper::broadcastMessage(const RemoteMessage::Ptr& message)
{
    return message != nullptr && IpcChannel::get().broadcast(*message);
}

bool MessageHelper::sendBroadcast(const juce::String& action, const Bundle::Ptr& bundle)
{
    return IpcChannel::get().broadcastNamed(action, bundle);
}

bool MessageHelper::isPresent(int appType)
{
    return IpcChannel::get().isPresent(appType);
}

int MessageHelper::ownerProcess(int appType)
{
    return IpcChannel::get().ownerProcess(appType);
}

void MessageHelper::expectProcess(int appType, int pid)
{
    IpcChannel::get().expectProcess(appType, pid);
}

} // namespace IPCMsg

} // namespace Platform
