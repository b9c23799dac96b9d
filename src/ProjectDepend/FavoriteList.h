#pragma once

#include "platform/base/Pubhead.h"
#include "platform/settings/SetupIndex.h"

#include <array>
#include <juce_core/juce_core.h>

namespace Bar
{

/** A band that a favourite may be of: its page, its picture in the resource packs, its short name. */
struct FavoriteBand
{
    int page;
    const char* icon;
    const char* name;
};

inline constexpr std::array favoriteBands {
    FavoriteBand { Pubhead::mbFM, "farvoritebar\\fm.png", "FM" },
    FavoriteBand { Pubhead::mbAM, "farvoritebar\\am.png", "AM" },
    FavoriteBand { Pubhead::mbWB, "farvoritebar\\wx.png", "WB" },
    FavoriteBand { Pubhead::mbSirius, "farvoritebar\\sxm.png", "SXM" },
    FavoriteBand { Pubhead::mbDAB, "farvoritebar\\dab.png", "DAB" },
};

/** What the settings say about the favourites. Holds values only. */
class FavoriteList
{
public:
    /** The setting values of a favourite in the list. */
    void set(int favorite, int page, const juce::String& label);

    const juce::String& getLabel(int favorite) const { return at(favorite).label; }
    /** "" when its page is of no band. */
    juce::String getIcon(int favorite) const;
    /** Bit 0 is favourite 1. Stored are those of a band that have a label. */
    juce::uint16 getStored() const;
    /** "3  FM Harbour": number, short name of the band ("" without one) and label. */
    juce::String getInformation(int favorite) const;

private:
    struct Entry
    {
        const FavoriteBand* band = nullptr; ///< null when its page is of none
        juce::String label;
    };

    const Entry& at(int favorite) const { return entries[static_cast<std::size_t>(favorite - 1)]; }

    std::array<Entry, Platform::favouriteCount> entries;
};

} // namespace Bar
