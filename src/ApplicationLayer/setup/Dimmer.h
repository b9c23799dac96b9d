#pragma once

#include <cstdint>
#include <optional>

/**
    The rules of the dimmer, which screen and key lights share. A level is 0 (dark) to 11 (full); the microcontroller
    counts from 1. Stored levels outside of that count as the nearest one, an unknown mode as full, so that the screen
    can be read whatever the store holds.
*/
namespace ApplicationLayer
{

/** The dimmer's settings as stored. */
struct DimmerSettings
{
    enum Mode : std::int32_t { full = 0, night = 1, followsLights = 2 };

    std::int32_t mode = full;
    std::int32_t dayLevel = 0;
    std::int32_t nightLevel = 0;
};

struct Dimmer
{
    static constexpr int fullLevel = 11;
    /** What the user can choose for the night. */
    static constexpr int brightestNight = 5;

    static constexpr bool isLevel(int level) { return level >= 0 && level <= fullLevel; }
    static constexpr int toMcu(int level) { return level + 1; }
    static constexpr int fromMcu(int value) { return value - 1; }
    /** The brightness of the wired remote that goes with a level, 0 to 15. */
    static constexpr int toRemote(int level) { return level * 15 / fullLevel; }

    static int wantedLevel(const DimmerSettings& settings, bool lightsOn);

    /** The mode was chosen: the level to send. */
    static int chooseMode(const DimmerSettings& settings, bool lightsOn);

    /**
        The microcontroller reports its level: the level to correct it to, or none when it is to be taken over. Until
        the unit has been `synced`, that is, knows whether the lights are on, a level that would follow them is not
        corrected.
    */
    static std::optional<int> correct(const DimmerSettings& settings, bool lightsOn, bool synced, int reported);

    struct Move
    {
        enum class Store { nothing, day, night };
        int level;   ///< to send
        Store store; ///< keep it as this level
    };
    /** The user moved the level. */
    static Move move(const DimmerSettings& settings, bool lightsOn, int level);
};

} // namespace ApplicationLayer
