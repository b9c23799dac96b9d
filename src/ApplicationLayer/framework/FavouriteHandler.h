#pragma once

#include "ApplicationLayer/framework/AppHandler.h"

#include <optional>

namespace ApplicationLayer
{

/**
    A page that plays favourites: the key of one asks for the page, and the page's next command line carries the
    favourite to the program. Other keys are not for these programs.
*/
class FavouriteHandler : public AppHandler
{
public:
    using AppHandler::AppHandler;

    void onKey(juce::int32 key, juce::int32 favourite) override;
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;

private:
    std::optional<juce::int32> pendingFavourite;
};

/**
    A program says how many favourites it offers, 1 to 16, 0 for as many as before; a favourites bar that is shown is
    drawn anew.
*/
void offerFavourites(juce::int32 count);

} // namespace ApplicationLayer
