#include "platform/channel/RemoteMessage.h"

#include "platform/base/Pool.h"

namespace Platform
{

namespace
{

constexpr std::size_t mostSpare = 50;

Pool<RemoteMessage>& pool()
{
    static Pool<RemoteMessage> only("channel messages", mostSpare);
    return only;
}

} // namespace

RemoteMessage::Ptr RemoteMessage::obtain()
{
    if (auto message = pool().take(); message != nullptr)
        return message;
    return new RemoteMessage;
}

void RemoteMessage::recycle(Ptr message)
{
    if (message != nullptr)
        message->giveBack();
}

void RemoteMessage::giveBack()
{
    if (getReferenceCount() > 1)
        return;
    what = arg1 = arg2 = appType = 0;
    bundle = nullptr;
    pool().give(*this);
}

} // namespace Platform
