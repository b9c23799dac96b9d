#pragma once

#include "EngineApi/Bars.h"
#include "ProjectDepend/BarWindow.h"
#include "ProjectDepend/FavouriteList.h"
#include "platform/base/Shared.h"
#include "platform/base/Time.h"
#include "platform/screen/CVXButton.h"
#include "platform/screen/CVXStatic.h"

namespace Bar
{

/**
    Lets a person pick one of 16 favourites with the rotary control: shows eight of them at a time and the supply
    voltage, and tells the wired remote which one is selected. Closes by itself after 10 s, or 5 s over the camera's
    picture.
*/
class FavoriteBar : public EngineApi::FavoriteBar, public BarWindow, public Platform::MultiTimer
{
public:
    static constexpr int showTimer = 0;
    static constexpr int alertTimer = 1;

    FavoriteBar();

    /**
        MSG_FAVOURITES_... and MSG_VOLTMETER_...; others are ignored, and so is a selection outside 1 to 16 (logged). Any
        thread.
    */
    void postMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload) override;
    bool isShown() const override { return isBarShown(); }
    int getCurrentIndex() const override { return currentIndex; }
    bool isStored(int favourite) const override;
    /** Others are ignored, and logged. */
    void setFavoriteCount(int count) override;
    /** 1 until a source program has offered another number. Any thread. */
    int getFavoriteCount() const { return favoriteCount; }
    void refresh() override;

    void show(int parameter) override;
    void hide() override;
    void timerCallback(int timer) override;

private:
    void select(int favourite, bool overCamera);
    void showAlert(bool visible);
    void showVoltage(double volts);
    void readFavourites();
    void drawFavourites();
    void tellRemote();

    /** These, and the buttons, are null where the layout lacks them. */
    juce::Component* const groupOne;
    juce::Component* const groupTwo;
    juce::Component* const alertGroup;
    Platform::CVXStatic* const voltageText;
    std::array<Platform::CVXButton*, Platform::favouriteCount> favoriteButtons {};

    FavouriteList favourites;
    Platform::Shared<juce::uint16> storedFavourites { 0 }; ///< of `favourites`, for other threads
    Platform::Shared<int> currentIndex { 1 };
    Platform::Shared<int> favoriteCount { 1 };
    int showDuration = 0; ///< ms; set by each selection
    const juce::Component::SafePointer<FavoriteBar> self { this };
};

} // namespace Bar
