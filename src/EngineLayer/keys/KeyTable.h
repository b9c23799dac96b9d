#pragma once

#include "EngineApi/KeyCodes.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"

#include <juce_core/juce_core.h>
#include <variant>
#include <vector>

/** What a key does in each situation. Pure: the key manager reads the situation and carries out the actions. */
namespace EngineLayer
{

/** The state of the unit when a key arrives. */
struct KeySituation
{
    int frontPage = Pubhead::NUM_OF_PAGES;
    int frontApp = Pubhead::AppUnknown;
    int normalPage = Pubhead::NUM_OF_PAGES; ///< the normal source's
    int normalApp = Pubhead::AppUnknown;
    bool poweredOn = true;
    bool lowBatteryAlert = false;
    bool volumeBarShown = false;
    bool zone2On = false;
    bool favouritesShown = false;
    int favouritesBarIndex = 1; ///< the favourite that the bar would open with, 1 to 16
    int favourite = 1;          ///< the favourite that keys act on, 1 to 16
    bool favouriteStored = false;
    int favouritePage = Pubhead::NUM_OF_PAGES; ///< where it is received
    int lastSourcePage = Pubhead::NUM_OF_PAGES;
};

// What the unit does about a key, in this order.

/** A key message to a source program. */
struct ProgramKey
{
    int appType;
    int key;
    int argument = 0;
    bool operator==(const ProgramKey&) const = default;
};
/** A key message to a page's application. */
struct PageKey
{
    int page;
    int key;
    int argument = 0;
    bool operator==(const PageKey&) const = default;
};
struct FavouriteMessage
{
    enum Mode { store = Platform::favouriteStore, play = Platform::favouritePlay, open = Platform::favouriteOpen };
    int appType;
    Mode mode;
    int favourite;
    bool operator==(const FavouriteMessage&) const = default;
};
/** Opens the favourites bar, or moves in it; from then on keys act on this favourite. */
struct SelectFavourite
{
    int favourite;
    bool cameraInFront = false;
    bool operator==(const SelectFavourite&) const = default;
};
struct PowerSwitch
{
    bool on;
    bool operator==(const PowerSwitch&) const = default;
};
/** Asks the microcontroller to switch the unit on or off. */
struct PowerRequest
{
    bool on;
    bool operator==(const PowerRequest&) const = default;
};
struct VolumeStep
{
    int steps; ///< 1 or -1, in the current zone
    bool operator==(const VolumeStep&) const = default;
};
struct ShowPage
{
    int page;
    bool operator==(const ShowPage&) const = default;
};
struct KeyLog
{
    const char* tag;
    juce::String text;
    bool operator==(const KeyLog&) const = default;
};
enum class KeyStep { toggleMute, hideFavourites, emptySlotNotice, lowBatteryAlertOff, closeVolumeBar };

using KeyAction = std::variant<KeyStep, ProgramKey, PageKey, FavouriteMessage, SelectFavourite, PowerSwitch,
                               PowerRequest, VolumeStep, ShowPage, KeyLog>;
using KeyActions = std::vector<KeyAction>;

/** What follows from a key (EngineApi::KeyCode, or any other number) of this origin (EngineApi::KeyOrigin). */
KeyActions actionsOfKey(int origin, int key, const KeySituation& situation);
/** Tells the pages that show speakers or help of any key but 0. */
KeyActions noticesOfKey(int key, const KeySituation& situation);

} // namespace EngineLayer
