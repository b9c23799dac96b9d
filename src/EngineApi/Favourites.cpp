#include "EngineApi/Favourites.h"

#include "EngineApi/RemoteMessageIds.h"
#include "EngineApi/Settings.h"

namespace EngineApi
{

juce::int32 favouriteMessageOf(int appType)
{
    switch (appType)
    {
    case Pubhead::AppSirius:
        return RMSG_SXM_FAVOURITE;
    case Pubhead::AppDAB:
        return RMSG_DAB_FAVOURITE;
    default:
        return RMSG_FAVOURITE;
    }
}

int getFavouritePage(int favourite)
{
    constexpr int settingBefore = 23;
    return getSettingInt(settingBefore + favourite);
}

} // namespace EngineApi
