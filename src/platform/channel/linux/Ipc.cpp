#include "platform/channel/Ipc.h"

#include "platform/channel/linux/IpcChannel.h"
#include "platform/record/Recorder.h"

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
    return message != nullptr && recorded(
                                     Step::post, [&] { return IpcChannel::get().post(appType, message); }, appType,
                                     message->what, message->arg1, message->arg2, message->bundle);
}

bool MessageHelper::broadcastMessage(const RemoteMessage::Ptr& message)
{
    return message != nullptr && recorded(
                                     Step::postToAll, [&] { return IpcChannel::get().broadcast(*message); },
                                     message->what, message->arg1, message->arg2, message->bundle);
}

bool MessageHelper::sendBroadcast(const juce::String& action, const Bundle::Ptr& bundle)
{
    return recorded(
        Step::postNamed, [&] { return IpcChannel::get().broadcastNamed(action, bundle); }, action, bundle);
}

std::string MessageHelper::busAddress()
{
    return IpcLink::busAddress();
}

bool MessageHelper::isPresent(int appType)
{
    return recorded(
        Step::isPresent, [&] { return IpcChannel::get().isPresent(appType); }, appType);
}

int MessageHelper::ownerProcess(int appType)
{
    return recorded(
        Step::ownerOf, [&] { return IpcChannel::get().ownerProcess(appType); }, appType);
}

void MessageHelper::expectProcess(int appType, int pid)
{
    IpcChannel::get().expectProcess(appType, pid);
}

} // namespace IPCMsg

} // namespace Platform
