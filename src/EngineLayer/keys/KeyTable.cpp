#include "EngineLayer/keys/KeyTable.h"

#include "platform/settings/SetupIndex.h"

namespace EngineLayer
{

using namespace EngineApi;
using namespace Pubhead;

namespace
{

/** The program key that stands for play and pause whatever key was pressed. */
constexpr int playPauseOfPrograms = KEY_PLAYPAUSE;

constexpr int originSourceVariant = 2;
constexpr int sourceVariantArgument = 2;

constexpr const char* barTag = "FavoriteBar";
constexpr const char* recallTag = "Favourite";

bool playsAndPauses(int appType)
{
    return appType == AppUSB || appType == AppBluetooth || appType == AppSirius || appType == AppPandora;
}

/** Builds the list for one key; each row of the table is one function or case. */
class KeyRow
{
public:
    KeyRow(int keyOrigin, int keyValue, const KeySituation& currentSituation)
        : origin(keyOrigin)
        , key(keyValue)
        , unit(currentSituation)
    {
    }

    KeyActions take()
    {
        choose();
        if (unit.volumeBarShown && !keepsVolumeBar)
            actions.emplace_back(KeyStep::closeVolumeBar);
        return std::move(actions);
    }

private:
    void choose();
    void playOrMute();
    void skip();
    void source();
    void menu();
    void rotaryEnter();
    void rotary(int step);
    void storeOrVersion(bool showsVersion);
    void goBack();
    void favourites();
    void storeOrRecall();
    void recall();

    void toNormal(int programKey, int argument = 0)
    {
        actions.emplace_back(ProgramKey { unit.normalApp, programKey, argument });
    }
    void toFront(int programKey) { actions.emplace_back(ProgramKey { unit.frontApp, programKey }); }
    void toPage(int page, int pageKey, int argument = 0) { actions.emplace_back(PageKey { page, pageKey, argument }); }
    void toFavourites(FavouriteMessage::Mode mode)
    {
        actions.emplace_back(FavouriteMessage { unit.normalApp, mode, unit.favourite });
    }
    void log(const char* tag, const juce::String& text) { actions.emplace_back(KeyLog { tag, text }); }
    void hideFavourites()
    {
        if (unit.favouritesShown)
            actions.emplace_back(KeyStep::hideFavourites);
    }

    const int origin;
    const int key;
    const KeySituation& unit;
    KeyActions actions;
    bool keepsVolumeBar = false;
};

void KeyRow::choose()
{
    switch (key)
    {
    case KEY_PLAYPAUSE:
    case KEY_AMFM:
        return playOrMute();
    case KEY_NEXT:
    case KEY_PRE:
        return skip();
    case KEY_SOURCE:
        return source();
    case KEY_POWER_ON:
    case KEY_POWER_OFF:
        actions.emplace_back(PowerSwitch { key == KEY_POWER_ON });
        return;
    case KEY_VOLUME_DOWN:
    case KEY_VOLUME_UP:
        keepsVolumeBar = true;
        actions.emplace_back(VolumeStep { key == KEY_VOLUME_UP ? 1 : -1 });
        return;
    case KEY_MMS1:
        hideFavourites();
        return toPage(mbSetup, key);
    case KEY_MENU:
        return menu();
    case KEY_ROTARY_ENTER:
        return rotaryEnter();
    case KEY_AMS1:
        return storeOrVersion(false);
    case KEY_SHOWVERSION:
        return storeOrVersion(unit.frontApp == AppSirius);
    case KEY_SHOWCAMERA:
        hideFavourites();
        return toPage(mbCamera, key);
    case KEY_RETURN:
        return goBack();
    case KEY_ROTARY_NEXT:
        return rotary(1);
    case KEY_ROTARY_PRE:
        return rotary(-1);
    case KEY_FAVORITIES:
        return favourites();
    case KEY_PLAYPAUSE_LONGPRESS:
        return toPage(mbSetup, key);
    case KEY_PRE_LONGPRESS:
    case KEY_NEXT_LONGPRESS:
        return toFront(key);
    case KEY_REMOTE_POWER_OFF:
        actions.emplace_back(PowerRequest { !unit.poweredOn });
        return;
    default:
        return;
    }
}

void KeyRow::playOrMute()
{
    if (playsAndPauses(unit.normalApp))
        return toNormal(playPauseOfPrograms);
    keepsVolumeBar = true;
    actions.emplace_back(KeyStep::toggleMute);
}

void KeyRow::skip()
{
    if (!unit.favouritesShown && (unit.frontApp == unit.normalApp || unit.frontApp == AppCamera))
        toNormal(key);
}

void KeyRow::source()
{
    if (origin == originWiredRemote && !unit.poweredOn)
    {
        actions.emplace_back(PowerRequest { true });
        return;
    }
    hideFavourites();
    toPage(mbMainMenu, key, origin == originSourceVariant ? sourceVariantArgument : 0);
}

void KeyRow::menu()
{
    hideFavourites();
    switch (unit.frontPage)
    {
    case mbMainMenu:
        return toPage(mbMainMenu, key);
    case mbSetup:
        return toNormal(KEY_REQUESTSHOWMENU);
    case mbCamera:
        toNormal(key);
        if (unit.normalPage != mbFM && unit.normalPage != mbAM)
            actions.emplace_back(ShowPage { unit.normalPage });
        return;
    default:
        return toNormal(key);
    }
}

void KeyRow::rotaryEnter()
{
    if (unit.favouritesShown)
        return recall();
    keepsVolumeBar = unit.zone2On;
    toFront(key);
}

void KeyRow::rotary(int step)
{
    keepsVolumeBar = true;
    if (!unit.favouritesShown)
        return toFront(key);
    const int next = (unit.favourite - 1 + step + Platform::favouriteCount) % Platform::favouriteCount + 1;
    actions.emplace_back(SelectFavourite { next });
}

void KeyRow::storeOrVersion(bool showsVersion)
{
    if (unit.favouritesShown)
        return storeOrRecall();
    if (showsVersion)
        toNormal(key);
    else
        toPage(mbSetup, key);
}

void KeyRow::goBack()
{
    if (unit.lowBatteryAlert)
        actions.emplace_back(KeyStep::lowBatteryAlertOff);
    else if (unit.favouritesShown)
        actions.emplace_back(KeyStep::hideFavourites);
    else if (unit.frontPage == mbMainMenu)
        toPage(mbMainMenu, key);
    else
        toFront(key);
}

void KeyRow::favourites()
{
    if (unit.favouritesShown)
        return hideFavourites();
    if (unit.frontPage != mbCamera && unit.normalApp == AppSirius)
        actions.emplace_back(FavouriteMessage { unit.normalApp, FavouriteMessage::open, unit.favouritesBarIndex });
    else
        actions.emplace_back(SelectFavourite { unit.favouritesBarIndex, unit.frontPage == mbCamera });
}

void KeyRow::storeOrRecall()
{
    log(barTag, "KEY_AMS1, CurNormalSource = " + juce::String(unit.normalApp));
    if (unit.favouriteStored)
        toNormal(key, unit.favourite);
    else
        toFavourites(FavouriteMessage::store);
}

void KeyRow::recall()
{
    if (!unit.favouriteStored)
    {
        if (unit.normalApp == AppSirius)
            actions.emplace_back(KeyStep::emptySlotNotice);
        return;
    }
    hideFavourites();
    log(barTag, "KEY_ROTARY_ENTER, type = " + juce::String(unit.favouritePage) + ", CurType = " +
                    juce::String(unit.lastSourcePage) + ", CurNormalSource = " + juce::String(unit.normalApp));
    if (unit.favouritePage == unit.lastSourcePage)
        return toFavourites(FavouriteMessage::play);
    log(recallTag, juce::String("Change Type To:") + pageName(unit.favouritePage));
    // The camera hides the source; the source that plays behind it can take the favourite as well.
    if (unit.lastSourcePage == mbCamera && (unit.normalApp == AppSirius || unit.normalApp == AppRadio))
        toFavourites(FavouriteMessage::play);
    toPage(unit.favouritePage, key, unit.favourite);
}

} // namespace

KeyActions actionsOfKey(int origin, int key, const KeySituation& situation)
{
    return KeyRow(origin, key, situation).take();
}

KeyActions noticesOfKey(int key, const KeySituation& situation)
{
    if (key == 0)
        return {};
    KeyActions notices { PageKey { mbCamera, KEY_INFOBAR_SWITCH_SPEAKER } };
    if (situation.frontApp == AppMainMenu)
        notices.emplace_back(PageKey { mbMainMenu, KEY_INFOBAR_SWITCH_SPEAKER });
    else if (situation.frontApp == AppSetup)
        notices.emplace_back(PageKey { mbSetup, KEY_INFOBAR_SWITCH_SPEAKER });
    return notices;
}

} // namespace EngineLayer
