#include "ProjectDepend/FavoriteList.h"

#include <algorithm>

namespace Bar
{

void FavoriteList::set(int favorite, int page, const juce::String& label)
{
    const auto* band = std::find_if(favoriteBands.begin(), favoriteBands.end(),
                                    [page](const FavoriteBand& each) { return each.page == page; });
    entries[static_cast<std::size_t>(favorite - 1)] = { band == favoriteBands.end() ? nullptr : band, label };
}

juce::String FavoriteList::getIcon(int favorite) const
{
    const auto* band = at(favorite).band;
    return band == nullptr ? "" : band->icon;
}

juce::uint16 FavoriteList::getStored() const
{
    juce::uint16 stored = 0;
    for (std::size_t index = 0; index < entries.size(); ++index)
        if (entries[index].band != nullptr && entries[index].label.isNotEmpty())
            stored = static_cast<juce::uint16>(stored | 1u << index);
    return stored;
}

juce::String FavoriteList::getInformation(int favorite) const
{
    const auto& [band, label] = at(favorite);
    return juce::String(favorite) + "  " + (band == nullptr ? "" : band->name) + " " + label;
}

} // namespace Bar
