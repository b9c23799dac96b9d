#include "ProjectDepend/FavoriteBar.h"

#include "EngineApi/Provided.h"
#include "EngineApi/WiredRemote.h"
#include "kernel/MessageIds.h"
#include "platform/base/Logger.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"
#include "platform/settings/SysInfo.h"
#include "platform/settings/SysInfoItems.h"

namespace Bar
{

namespace
{

constexpr Platform::Log logger { "ProjectDepend/FavoriteBar", "FavoriteBar" };

constexpr int showMs = 10000;
constexpr int showOverCameraMs = 5000;
constexpr int alertMs = 3000;
constexpr juce::int32 overCameraArgument = 1;

constexpr int firstOfGroupTwo = 9;

constexpr int labelText = 0;

/** A change is shown by another scale than the first value. */
constexpr double voltsPerStepOfMessage = 24.0 / 255;

constexpr const char* selectedPicture = "farvoritebar\\fav_button_p.png";
constexpr const char* normalPicture = "farvoritebar\\fav_button_n.png";

} // namespace

FavoriteBar::FavoriteBar()
    : BarWindow("FavoriteBar", "Farvoritebar\\favorite.bin")
    , groupOne(findControl<juce::Component>("gp_one"))
    , groupTwo(findControl<juce::Component>("gp_two"))
    , alertGroup(findControl<juce::Component>("gp_alert"))
    , voltageText(findControl<Platform::CVXStatic>("StVoltaValue"))
{
    for (std::size_t index = 0; index < favoriteButtons.size(); ++index)
        favoriteButtons[index] = findControl<Platform::CVXButton>("Btn_favorites" + juce::String(index + 1));
    setVisibleIf(groupTwo, false);
    setVisibleIf(alertGroup, false);
}

void FavoriteBar::postMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload)
{
    if (passOn(self, id, arg1, arg2, payload))
        return;
    switch (id)
    {
    case Kernel::MSG_FAVOURITES_SELECT:
        select(arg1, arg2 == overCameraArgument);
        break;
    case Kernel::MSG_FAVOURITES_HIDE:
        hide();
        break;
    case Kernel::MSG_FAVOURITES_EMPTY_SLOT:
        showAlert(true);
        break;
    case Kernel::MSG_VOLTMETER_SHOW:
        if (isShown())
            setVisibleIf(voltageText, arg1 != 0);
        break;
    case Kernel::MSG_VOLTMETER_VALUE:
        if (isShown())
            showVoltage(arg1 * voltsPerStepOfMessage);
        break;
    default:
        break;
    }
}

bool FavoriteBar::isStored(int favourite) const
{
    return Platform::isFavourite(favourite) && (storedFavourites >> (favourite - 1) & 1) != 0;
}

void FavoriteBar::setFavoriteCount(int count)
{
    if (Platform::isFavourite(count))
        favoriteCount = count;
    else
        logger().error("%d favourites are offered, 1 to 16 are taken", count);
}

void FavoriteBar::select(int favourite, bool overCamera)
{
    if (!Platform::isFavourite(favourite))
    {
        logger().error("there is no favourite %d", favourite);
        return;
    }
    showVoltage(Platform::VX_GetSysInfo(Platform::sysInfoVoltage) * Platform::voltsPerStep);
    setVisibleIf(voltageText, Platform::VX_GetSysInfo(Platform::sysInfoVoltageShown) != 0);
    currentIndex = favourite;
    setVisibleIf(groupOne, favourite < firstOfGroupTwo);
    setVisibleIf(groupTwo, favourite >= firstOfGroupTwo);
    showAlert(false);
    showDuration = overCamera ? showOverCameraMs : showMs;
    show(0);
    refresh();
}

void FavoriteBar::showVoltage(double volts)
{
    if (voltageText != nullptr)
        voltageText->setText(juce::String::formatted("%.1fv", volts));
}

void FavoriteBar::showAlert(bool visible)
{
    setVisibleIf(alertGroup, visible);
    if (visible)
        startTimer(alertTimer, alertMs);
    else
        stopTimer(alertTimer);
}

void FavoriteBar::refresh()
{
    if (!Platform::isMessageThread())
    {
        Platform::callOnMessageThread(
            [bar = self]
            {
                if (bar != nullptr)
                    bar->refresh();
            });
        return;
    }
    readFavourites();
    drawFavourites();
    // What comes from another thread may find that the bar has gone, and with it its text on the remote.
    if (isShown())
        tellRemote();
}

void FavoriteBar::readFavourites()
{
    for (int favourite = 1; favourite <= Platform::favouriteCount; ++favourite)
        favourites.set(favourite, Platform::VX_GetSetupValueInt(Platform::favouritePageSetting(favourite)),
                       Platform::VX_GetSetupValueString(Platform::favouriteLabelSetting(favourite)));
    storedFavourites = favourites.getStored();
}

void FavoriteBar::drawFavourites()
{
    for (int favourite = 1; favourite <= Platform::favouriteCount; ++favourite)
    {
        auto* button = favoriteButtons[static_cast<std::size_t>(favourite - 1)];
        if (button == nullptr)
            continue;
        button->setIcon(favourites.getIcon(favourite));
        button->setText(labelText, favourites.getLabel(favourite));
        button->setImagePath(favourite == currentIndex ? selectedPicture : normalPicture);
    }
}

void FavoriteBar::tellRemote()
{
    const auto information = favourites.getInformation(currentIndex);
    Platform::Log("ProjectDepend/FavoriteBar", "TLX70")().debug("strInfo = " + information);
    if (auto* remote = EngineApi::Provided<EngineApi::WiredRemote>::get())
    {
        remote->clearDisplay(false);
        remote->showText(0, 0, "Favorites", true);
        remote->showText(1, 0, information, true);
    }
}

void FavoriteBar::show(int parameter)
{
    startTimer(showTimer, showDuration);
    BarWindow::show(parameter);
}

void FavoriteBar::hide()
{
    stopTimer(showTimer);
    showAlert(false);
    const bool wasShown = isShown();
    BarWindow::hide();
    // The favourites were a temporary text: what the source shows there comes back.
    if (auto* remote = EngineApi::Provided<EngineApi::WiredRemote>::get(); remote != nullptr && wasShown)
        remote->restore();
}

void FavoriteBar::timerCallback(int timer)
{
    if (timer == showTimer)
        hide();
    else
        showAlert(false);
}

} // namespace Bar
