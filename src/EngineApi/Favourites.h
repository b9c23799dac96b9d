#pragma once

#include <juce_core/juce_core.h>

/** The sixteen favourites, whoever stores them. Any thread. */
namespace EngineApi
{

/** The message that stores and plays favourites in this program: RMSG_FAVOURITE or that of its own. */
juce::int32 favouriteMessageOf(int appType);
/** The page of favourite 1 to 16, as its program stored it. */
int getFavouritePage(int favourite);

} // namespace EngineApi
