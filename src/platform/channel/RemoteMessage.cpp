#include "platform/channel/RemoteMessage.h"

#include "platform/base/Pool.h"

namespace Platform
{

namespace
{

constexpr std::size_t mostSpare = 50;

Pool<RemoteMessage>& pool()
{
    static Pool<RemoteMessage> only(mostSpare);
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
    if (message == nullptr || message->getReferenceCount() > 1)
        return;
    message->what = message->arg1 = message->arg2 = message->appType = 0;
    message->bundle = nullptr;
    pool().give(*message);
}

} // namespace Platform
