#include "ApplicationLayer/setup/Dimmer.h"

#include <algorithm>

namespace ApplicationLayer
{

namespace
{

int nearestLevel(int stored)
{
    return std::clamp(stored, 0, Dimmer::fullLevel);
}

} // namespace

int Dimmer::wantedLevel(const DimmerSettings& settings, bool lightsOn)
{
    switch (settings.mode)
    {
    case DimmerSettings::night:
        return nearestLevel(settings.nightLevel);
    case DimmerSettings::followsLights:
        return nearestLevel(lightsOn ? settings.nightLevel : settings.dayLevel);
    default:
        return fullLevel;
    }
}

int Dimmer::chooseMode(const DimmerSettings& settings, bool lightsOn)
{
    const int level = wantedLevel(settings, lightsOn);
    return settings.mode == DimmerSettings::night ? std::min(level, brightestNight) : level;
}

std::optional<int> Dimmer::correct(const DimmerSettings& settings, bool lightsOn, bool synced, int reported)
{
    const int wanted = wantedLevel(settings, lightsOn);
    const bool unknown = settings.mode == DimmerSettings::followsLights && !synced;
    return reported == wanted || unknown ? std::nullopt : std::optional(wanted);
}

Dimmer::Move Dimmer::move(const DimmerSettings& settings, bool lightsOn, int level)
{
    level = nearestLevel(level);
    switch (settings.mode)
    {
    case DimmerSettings::night:
        return { level, level <= brightestNight ? Move::Store::night : Move::Store::nothing };
    case DimmerSettings::followsLights:
        if (!lightsOn)
            return { level, Move::Store::day };
        return { std::min(level, brightestNight), Move::Store::night };
    default:
        return { fullLevel, Move::Store::nothing };
    }
}

} // namespace ApplicationLayer
