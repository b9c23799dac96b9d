#include "EngineLayer/KeyTable.h"

#include <gtest/gtest.h>
#include <string>

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;

namespace
{

std::string text(KeyStep step)
{
    switch (step)
    {
    case KeyStep::toggleMute:
        return "mute";
    case KeyStep::hideFavorites:
        return "hide favourites";
    case KeyStep::emptySlotNotice:
        return "empty slot";
    case KeyStep::lowBatteryAlertOff:
        return "alert off";
    case KeyStep::closeVolumeBar:
        return "close volume bar";
    }
    return "?";
}
std::string number(int value)
{
    return " " + std::to_string(value);
}
std::string text(const ProgramKey& key)
{
    return std::string(appTypeName(key.appType)) + number(key.key) + (key.argument != 0 ? number(key.argument) : "");
}
std::string text(const PageKey& key)
{
    return std::string(pageName(key.page)) + number(key.key) + (key.argument != 0 ? number(key.argument) : "");
}
std::string text(const FavoriteMessage& message)
{
    constexpr const char* modes[] = { " store", " play", " open" };
    return std::string(appTypeName(message.appType)) + modes[message.mode] + number(message.favorite);
}
std::string text(const SelectFavorite& select)
{
    return "select" + number(select.favorite) + (select.cameraInFront ? " camera" : "");
}
std::string text(const PowerSwitch& power)
{
    return power.on ? "on" : "off";
}
std::string text(const PowerRequest& power)
{
    return power.on ? "ask on" : "ask off";
}
std::string text(const VolumeStep& volume)
{
    return volume.steps > 0 ? "louder" : "softer";
}
std::string text(const ShowPage& show)
{
    return std::string("show ") + pageName(show.page);
}
std::string text(const KeyLog& log)
{
    return "[" + log.text.toStdString() + "]";
}

std::string textOf(const KeyActions& actions)
{
    std::string all;
    for (const auto& action : actions)
        all += (all.empty() ? "" : ", ") + std::visit([](const auto& each) { return text(each); }, action);
    return all;
}

/** Radio plays and is in front; nothing else is shown. */
KeySituation radio()
{
    KeySituation unit;
    unit.frontPage = unit.normalPage = mbFM;
    unit.frontApp = unit.normalApp = AppRadio;
    unit.lastSourcePage = mbFM;
    return unit;
}

using Change = void (*)(KeySituation&);

struct Row
{
    int key;
    const char* expected;
    Change change = [](KeySituation&) {};
    int origin = originFrontPanel;
};

void check(std::initializer_list<Row> rows)
{
    int line = 0;
    for (const auto& row : rows)
    {
        auto unit = radio();
        row.change(unit);
        EXPECT_EQ(textOf(actionsOfKey(row.origin, row.key, unit)), row.expected)
            << "row " << line << ": " << keyName(row.key);
        ++line;
    }
}

void front(KeySituation& unit, int page, int appType)
{
    unit.frontPage = page;
    unit.frontApp = appType;
}

void camera(KeySituation& unit)
{
    front(unit, mbCamera, AppCamera);
}
void menu(KeySituation& unit)
{
    front(unit, mbMainMenu, AppMainMenu);
}
void setup(KeySituation& unit)
{
    front(unit, mbSetup, AppSetup);
}
void normal(KeySituation& unit, int page, int appType)
{
    unit.normalPage = page;
    unit.normalApp = appType;
}
void satellite(KeySituation& unit)
{
    normal(unit, mbSirius, AppSirius);
    front(unit, mbSirius, AppSirius);
}
void bars(KeySituation& unit)
{
    unit.favoritesShown = true;
    unit.favorite = 3;
}

} // namespace

TEST(KeyTable, KeysOfTheSourceThatPlays)
{
    check({
        { KEY_PLAYPAUSE, "mute" },
        { KEY_AMFM, "AppBluetooth 2", [](auto& unit) { normal(unit, mbBTAudio, AppBluetooth); } },
        { KEY_PLAYPAUSE, "AppPandora 2", [](auto& unit) { normal(unit, mbiPodPandora, AppPandora); } },
        { KEY_PLAYPAUSE, "AppUSB 2", [](auto& unit) { normal(unit, mbUSBAudio, AppUSB); } },
        { KEY_AMFM, "AppSirius 2", satellite },
        { KEY_NEXT, "AppRadio 3" },
        { KEY_PRE, "AppRadio 4", camera },
        { KEY_NEXT, "", menu },
        { KEY_PRE, "", bars },
        { KEY_NEXT, "", [](auto& unit) { bars(unit), camera(unit); } },
        { KEY_PRE_LONGPRESS, "AppCamera 131", camera },
        { KEY_NEXT_LONGPRESS, "AppRadio 132" },
    });
}

TEST(KeyTable, KeysThatMoveBetweenPages)
{
    check({
        { KEY_SOURCE, "mbMainMenu 6" },
        { KEY_SOURCE, "hide favourites, mbMainMenu 6 2", bars, 2 },
        { KEY_SOURCE, "ask on", [](auto& unit) { unit.poweredOn = false; }, originWiredRemote },
        { KEY_SOURCE, "mbMainMenu 6", [](auto& unit) { unit.poweredOn = false; } },
        { KEY_SOURCE, "mbMainMenu 6", [](auto&) {}, originWiredRemote },
        { KEY_MMS1, "hide favourites, mbSetup 35", bars },
        { KEY_MENU, "AppRadio 42" },
        { KEY_MENU, "mbMainMenu 42", menu },
        { KEY_MENU, "AppRadio 255", setup },
        { KEY_MENU, "hide favourites, AppRadio 42", [](auto& unit) { bars(unit), camera(unit); } },
        { KEY_MENU, "AppRadio 42, show mbWB", [](auto& unit) { camera(unit), unit.normalPage = mbWB; } },
        { KEY_MENU, "AppRadio 42", [](auto& unit) { camera(unit), unit.normalPage = mbAM; } },
        { KEY_SHOWCAMERA, "hide favourites, mbCamera 61", bars },
        { KEY_PLAYPAUSE_LONGPRESS, "mbSetup 130" },
        { KEY_RETURN, "AppRadio 66" },
        { KEY_RETURN, "mbMainMenu 66", menu },
        { KEY_RETURN, "hide favourites", [](auto& unit) { bars(unit), menu(unit); } },
        { KEY_RETURN, "alert off", [](auto& unit) { bars(unit), unit.lowBatteryAlert = true; } },
        { KEY_SHOWVERSION, "mbSetup 67" },
        { KEY_SHOWVERSION, "AppSirius 67", satellite },
        { KEY_AMS1, "mbSetup 55", satellite },
    });
}

TEST(KeyTable, TheVolumeBarIsClosedButForTheKeysThatAreAboutIt)
{
    constexpr Change shown = [](auto& unit) { unit.volumeBarShown = true; };
    check({
        { KEY_VOLUME_UP, "louder", shown },
        { KEY_VOLUME_DOWN, "softer", shown },
        { KEY_PLAYPAUSE, "mute", shown },
        { KEY_PLAYPAUSE, "AppUSB 2, close volume bar",
          [](auto& unit) { unit.volumeBarShown = true, normal(unit, mbUSBAudio, AppUSB); } },
        { KEY_ROTARY_NEXT, "AppRadio 80", shown },
        { KEY_ROTARY_PRE, "AppRadio 81", shown },
        { KEY_ROTARY_ENTER, "AppRadio 54, close volume bar", shown },
        { KEY_ROTARY_ENTER, "AppRadio 54", [](auto& unit) { unit.volumeBarShown = unit.zone2On = true; } },
        { KEY_SOURCE, "mbMainMenu 6, close volume bar", shown },
        { 254, "close volume bar", shown },
    });
}

TEST(KeyTable, FavouritesBar)
{
    check({
        { KEY_FAVORITIES, "select 5", [](auto& unit) { unit.favoritesBarIndex = 5; } },
        { KEY_FAVORITIES, "select 5 camera",
          [](auto& unit) { satellite(unit), camera(unit), unit.favoritesBarIndex = 5; } },
        { KEY_FAVORITIES, "AppSirius open 5", [](auto& unit) { satellite(unit), unit.favoritesBarIndex = 5; } },
        { KEY_FAVORITIES, "hide favourites", bars },
        { KEY_ROTARY_NEXT, "select 4", bars },
        { KEY_ROTARY_PRE, "select 2", bars },
        { KEY_ROTARY_NEXT, "select 1", [](auto& unit) { bars(unit), unit.favorite = 16; } },
        { KEY_ROTARY_PRE, "select 16", [](auto& unit) { bars(unit), unit.favorite = 1; } },
    });
}

TEST(KeyTable, FavouriteIsStoredOrRecalled)
{
    constexpr Change stored = [](auto& unit)
    {
        bars(unit);
        unit.favoriteStored = true;
        unit.favoritePage = mbFM;
    };
    check({
        { KEY_AMS1, "[KEY_AMS1, CurNormalSource = 5], AppRadio store 3", bars },
        { KEY_SHOWVERSION, "[KEY_AMS1, CurNormalSource = 5], AppRadio 67 3", stored },
        { KEY_AMS1, "[KEY_AMS1, CurNormalSource = 5], AppRadio 55 3", stored },
        { KEY_ROTARY_ENTER, "", bars },
        { KEY_ROTARY_ENTER, "empty slot", [](auto& unit) { bars(unit), satellite(unit); } },
        { KEY_ROTARY_ENTER,
          "hide favourites, [KEY_ROTARY_ENTER, type = 52, CurType = 52, CurNormalSource = 5], AppRadio play 3",
          stored },
        { KEY_ROTARY_ENTER,
          "hide favourites, [KEY_ROTARY_ENTER, type = 53, CurType = 52, CurNormalSource = 5], [Change Type To:mbAM], "
          "mbAM 54 3",
          [](auto& unit) { bars(unit), unit.favoriteStored = true, unit.favoritePage = mbAM; } },
        { KEY_ROTARY_ENTER,
          "hide favourites, [KEY_ROTARY_ENTER, type = 18, CurType = 17, CurNormalSource = 5], [Change Type "
          "To:mbSirius], "
          "AppRadio play 3, mbSirius 54 3",
          [](auto& unit)
          { bars(unit), unit.favoriteStored = true, unit.favoritePage = mbSirius, unit.lastSourcePage = mbCamera; } },
    });
}
