#pragma once

#include "kernel/SystemMessage.h"

namespace EngineApi
{

/** Messages of the managers to a bar on the screen. Any thread. */
class BarMessages
{
public:
    virtual ~BarMessages() = default;
    virtual void postMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload) = 0;
};

/** To the volume bar: close, unless it shows that the audio is muted. */
inline constexpr juce::int32 MSG_BAR_CLOSE = 1196;

/** The three bars, each reached through Provided<...>. */
class VolumeBar : public BarMessages
{
public:
    /** The page in front has changed: the bar takes that page's images. Any thread. */
    virtual void updateImages(int frontPage) = 0;
    /** Whether it is on the screen. Any thread. */
    virtual bool isShown() const = 0;
};
class FavoriteBar : public BarMessages
{
public:
    /** Whether it is on the screen. Any thread, like the next two. */
    virtual bool isShown() const = 0;
    virtual int getCurrentIndex() const = 0;        ///< the selected favourite, 1 to 16
    virtual bool isStored(int favourite) const = 0; ///< 1 to 16; false outside
    /** How many favourites the source program offers, 1 to 16; any other number is ignored. Any thread. */
    virtual void setFavoriteCount(int count) = 0;
    /** Reads the favourites from the settings again, on the message thread. Any thread. */
    virtual void refresh() = 0;
};
class LowBatteryBar : public BarMessages
{
};

} // namespace EngineApi
