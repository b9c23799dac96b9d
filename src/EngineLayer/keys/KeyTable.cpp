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
    void favorites();
    void storeOrRecall();
    void recall();

    void toNormal(int programKey, int argument = 0)
    {
        actions.emplace_back(ProgramKey { unit.normalApp, programKey, argument });
    }
    void toFront(int programKey) { actions.emplace_back(ProgramKey { unit.frontApp, programKey }); }
    void toPage(int page, int pageKey, int argument = 0) { actions.emplace_back(PageKey { page, pageKey, argument }); }
    void toFavorites(FavoriteMessage::Mode mode)
    {
        actions.emplace_back(FavoriteMessage { unit.normalApp, mode, unit.favorite });
    }
    void log(const char* tag, const juce::String& text) { actions.emplace_back(KeyLog { tag, text }); }
    void hideFavorites()
    {
        if (unit.favoritesShown)
            actions.emplace_back(KeyStep::hideFavorites);
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
        hideFavorites();
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
        hideFavorites();
        return toPage(mbCamera, key);
    case KEY_RETURN:
        return goBack();
    case KEY_ROTARY_NEXT:
        return rotary(1);
    case KEY_ROTARY_PRE:
        return rotary(-1);
    case KEY_FAVORITIES:
        return favorites();
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
    if (!unit.favoritesShown && (unit.frontApp == unit.normalApp || unit.frontApp == AppCamera))
        toNormal(key);
}

void KeyRow::source()
{
    if (origin == originWiredRemote && !unit.poweredOn)
    {
        actions.emplace_back(PowerRequest { true });
        return;
    }
    hideFavorites();
    toPage(mbMainMenu, key, origin == originSourceVariant ? sourceVariantArgument : 0);
}

void KeyRow::menu()
{
    hideFavorites();
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
    if (unit.favoritesShown)
        return recall();
    keepsVolumeBar = unit.zone2On;
    toFront(key);
}

void KeyRow::rotary(int step)
{
    keepsVolumeBar = true;
    if (!unit.favoritesShown)
        return toFront(key);
    const int next = (unit.favorite - 1 + step + Platform::favouriteCount) % Platform::favouriteCount + 1;
    actions.emplace_back(SelectFavorite { next });
}

void KeyRow::storeOrVersion(bool showsVersion)
{
    if (unit.favoritesShown)
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
    else if (unit.favoritesShown)
        actions.emplace_back(KeyStep::hideFavorites);
    else if (unit.frontPage == mbMainMenu)
        toPage(mbMainMenu, key);
    else
        toFront(key);
}

void KeyRow::favorites()
{
    if (unit.favoritesShown)
        return hideFavorites();
    if (unit.frontPage != mbCamera && unit.normalApp == AppSirius)
        actions.emplace_back(FavoriteMessage { unit.normalApp, FavoriteMessage::open, unit.favoritesBarIndex });
    else
        actions.emplace_back(SelectFavorite { unit.favoritesBarIndex, unit.frontPage == mbCamera });
}

void KeyRow::storeOrRecall()
{
    log(barTag, "KEY_AMS1, CurNormalSource = " + juce::String(unit.normalApp));
    if (unit.favoriteStored)
        toNormal(key, unit.favorite);
    else
        toFavorites(FavoriteMessage::store);
}

void KeyRow::recall()
{
    if (!unit.favoriteStored)
    {
        if (unit.normalApp == AppSirius)
            actions.emplace_back(KeyStep::emptySlotNotice);
        return;
    }
    hideFavorites();
    log(barTag, "KEY_ROTARY_ENTER, type = " + juce::String(unit.favoritePage) + ", CurType = " +
                    juce::String(unit.lastSourcePage) + ", CurNormalSource = " + juce::String(unit.normalApp));
    if (unit.favoritePage == unit.lastSourcePage)
        return toFavorites(FavoriteMessage::play);
    log(recallTag, juce::String("Change Type To:") + pageName(unit.favoritePage));
    // The camera hides the source; the source that plays behind it can take the favourite as well.
    if (unit.lastSourcePage == mbCamera && (unit.normalApp == AppSirius || unit.normalApp == AppRadio))
        toFavorites(FavoriteMessage::play);
    toPage(unit.favoritePage, key, unit.favorite);
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
