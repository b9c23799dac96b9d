#include "EngineApi/Favourites.h"

#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"

namespace EngineApi
{

juce::int32 favouriteMessageOf(int appType)
{
    switch (appType)
    {
    case Pubhead::AppSirius:
        return Platform::RMSG_SXM_FAVOURITE;
    case Pubhead::AppDAB:
        return Platform::RMSG_DAB_FAVOURITE;
    default:
        return Platform::RMSG_FAVOURITE;
    }
}

} // namespace EngineApi
