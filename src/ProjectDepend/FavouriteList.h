#pragma once

#include "platform/base/Pubhead.h"
#include "platform/settings/SetupIndex.h"

#include <array>
#include <juce_core/juce_core.h>

namespace Bar
{

/** A band that a favourite may be of: its page, its picture in the resource packs, its short name. */
struct FavouriteBand
{
    int page;
    const char* icon;
    const char* name;
};

inline constexpr std::array favouriteBands {
    FavouriteBand { Pubhead::mbFM, "farvoritebar\\fm.png", "FM" },
    FavouriteBand { Pubhead::mbAM, "farvoritebar\\am.png", "AM" },
    FavouriteBand { Pubhead::mbWB, "farvoritebar\\wx.png", "WB" },
    FavouriteBand { Pubhead::mbSirius, "farvoritebar\\sxm.png", "SXM" },
    FavouriteBand { Pubhead::mbDAB, "farvoritebar\\dab.png", "DAB" },
};

/** What the settings say about the favourites. Holds values only. */
class FavouriteList
{
public:
    /** The setting values of a favourite in the list. */
    void set(int favourite, int page, const juce::String& label);

    const juce::String& getLabel(int favourite) const { return at(favourite).label; }
    /** "" when its page is of no band. */
    juce::String getIcon(int favourite) const;
    /** Bit 0 is favourite 1. Stored are those of a band that have a label. */
    juce::uint16 getStored() const;
    /** "3  FM Harbour": number, short name of the band ("" without one) and label. */
    juce::String getInformation(int favourite) const;

private:
    struct Entry
    {
        const FavouriteBand* band = nullptr; ///< null when its page is of none
        juce::String label;
    };

    const Entry& at(int favourite) const { return entries[static_cast<std::size_t>(favourite - 1)]; }

    std::array<Entry, Platform::favouriteCount> entries;
};

} // namespace Bar
