#include "ApplicationLayer/framework/FavouriteHandler.h"

#include "EngineApi/Bars.h"
#include "EngineApi/KeyCodes.h"
#include "EngineApi/Provided.h"
#include "platform/base/BundleKeys.h"

namespace ApplicationLayer
{

void FavouriteHandler::onKey(juce::int32 key, juce::int32 favourite)
{
    if (key != EngineApi::KEY_ROTARY_ENTER)
        return;
    pendingFavourite = favourite;
    requestShow(true);
}

void FavouriteHandler::decorateCommandLine(EngineApi::SwitchType, const EngineApi::PageStates&,
                                           const EngineApi::PageStates&, Platform::AppCommandLine& commandLine)
{
    if (!pendingFavourite)
        return;
    auto favourite = Platform::Bundle::obtain();
    favourite->putInt(Platform::BundleKeys::favouriteKey, *std::exchange(pendingFavourite, {}));
    commandLine.putExtraData(std::move(favourite));
}

void offerFavourites(juce::int32 count)
{
    auto* bar = EngineApi::Provided<EngineApi::FavoriteBar>::get();
    if (bar == nullptr)
        return;
    if (count > 0)
        bar->setFavoriteCount(count);
    if (bar->isShown())
        bar->refresh();
}

} // namespace ApplicationLayer
