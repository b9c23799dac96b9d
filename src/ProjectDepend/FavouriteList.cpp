#include "ProjectDepend/FavouriteList.h"

#include <algorithm>

namespace Bar
{

void FavouriteList::set(int favourite, int page, const juce::String& label)
{
    const auto* band = std::find_if(favouriteBands.begin(), favouriteBands.end(),
                                    [page](const FavouriteBand& each) { return each.page == page; });
    entries[static_cast<std::size_t>(favourite - 1)] = { band == favouriteBands.end() ? nullptr : band, label };
}

juce::String FavouriteList::getIcon(int favourite) const
{
    const auto* band = at(favourite).band;
    return band == nullptr ? "" : band->icon;
}

juce::uint16 FavouriteList::getStored() const
{
    juce::uint16 stored = 0;
    for (std::size_t index = 0; index < entries.size(); ++index)
        if (entries[index].band != nullptr && entries[index].label.isNotEmpty())
            stored = static_cast<juce::uint16>(stored | 1u << index);
    return stored;
}

juce::String FavouriteList::getInformation(int favourite) const
{
    const auto& [band, label] = at(favourite);
    return juce::String(favourite) + "  " + (band == nullptr ? "" : band->name) + " " + label;
}

} // namespace Bar
