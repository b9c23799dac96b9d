#include "EngineApi/Favourites.h"

#include "EngineApi/Settings.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"

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

int getFavouritePage(int favourite)
{
    return getSettingInt(Platform::favouritePageSetting(favourite));
}

} // namespace EngineApi
