#pragma once

#include "ApplicationLayer/framework/FavouriteHandler.h"
#include "ApplicationLayer/radio/RadioReports.h"

namespace ApplicationLayer
{

/** The page of one band. The page that got the last order has the tuner. */
class RadioHandler : public FavouriteHandler
{
public:
    /** The state belongs to the application, which outlives every order. */
    RadioHandler(int page, RadioBand pageBand, TunerState& tunerState)
        : FavouriteHandler(page)
        , band(pageBand)
        , tuner(tunerState)
    {
    }

    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override
    {
        tuner.band = band;
        FavouriteHandler::decorateCommandLine(switchType, currentStates, newStates, commandLine);
    }

private:
    const RadioBand band;
    TunerState& tuner;
};

class AMHandler : public RadioHandler
{
public:
    explicit AMHandler(TunerState& tunerState)
        : RadioHandler(Pubhead::mbAM, bandAM, tunerState)
    {
    }
};

class FMHandler : public RadioHandler
{
public:
    explicit FMHandler(TunerState& tunerState)
        : RadioHandler(Pubhead::mbFM, bandFM, tunerState)
    {
    }
};

class WBHandler : public RadioHandler
{
public:
    explicit WBHandler(TunerState& tunerState)
        : RadioHandler(Pubhead::mbWB, bandWB, tunerState)
    {
    }
};

} // namespace ApplicationLayer
