#include "ProjectDepend/Bars.h"

#include "EngineApi/Provided.h"
#include "ProjectDepend/FavoriteBar.h"
#include "ProjectDepend/LowBatteryAlertBar.h"
#include "ProjectDepend/VolumeBar.h"

namespace Bar
{

namespace
{

struct Bars
{
    VolumeBar volume;
    FavoriteBar favourites;
    LowBatteryAlertBar lowBattery;
};

std::unique_ptr<Bars> bars;

} // namespace

void createBars()
{
    bars = std::make_unique<Bars>();
    EngineApi::Provided<EngineApi::VolumeBar>::set(&bars->volume);
    EngineApi::Provided<EngineApi::FavoriteBar>::set(&bars->favourites);
    EngineApi::Provided<EngineApi::LowBatteryBar>::set(&bars->lowBattery);
}

void removeBars()
{
    EngineApi::Provided<EngineApi::VolumeBar>::set(nullptr);
    EngineApi::Provided<EngineApi::FavoriteBar>::set(nullptr);
    EngineApi::Provided<EngineApi::LowBatteryBar>::set(nullptr);
    bars.reset();
}

} // namespace Bar
