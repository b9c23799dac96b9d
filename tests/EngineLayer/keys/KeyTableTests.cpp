#include "EngineLayer/keys/KeyTable.h"

#include <gtest/gtest.h>

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using enum KeyStep;

namespace
{

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
    KeyActions expected;
    Change change = [](KeySituation&) {};
    int origin = originFrontPanel;
};

/** The log is left out. */
void check(const std::vector<Row>& rows)
{
    for (std::size_t line = 0; line < rows.size(); ++line)
    {
        const auto& row = rows[line];
        auto unit = radio();
        row.change(unit);
        auto actions = actionsOfKey(row.origin, row.key, unit);
        std::erase_if(actions, [](const auto& each) { return std::holds_alternative<KeyLog>(each); });
        EXPECT_TRUE(actions == row.expected) << "row " << line << ": " << keyName(row.key);
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
    unit.favouritesShown = true;
    unit.favourite = 3;
}

ProgramKey toRadio(int key, int argument = 0)
{
    return { AppRadio, key, argument };
}

} // namespace

TEST(KeyTable, KeysOfTheSourceThatPlays)
{
    check({
        { KEY_PLAYPAUSE, { toggleMute } },
        { KEY_AMFM, { ProgramKey { AppBluetooth, 2 } }, [](auto& unit) { normal(unit, mbBTAudio, AppBluetooth); } },
        { KEY_PLAYPAUSE, { ProgramKey { AppUSB, 2 } }, [](auto& unit) { normal(unit, mbUSBAudio, AppUSB); } },
        { KEY_AMFM, { ProgramKey { AppSirius, 2 } }, satellite },
        { KEY_PRE, { toRadio(4) }, camera },
        { KEY_NEXT, {}, menu },
        { KEY_PRE, {}, bars },
        { KEY_NEXT, {}, [](auto& unit) { bars(unit), camera(unit); } },
        { KEY_PRE_LONGPRESS, { ProgramKey { AppCamera, 131 } }, camera },
    });
}

TEST(KeyTable, KeysThatMoveBetweenPages)
{
    constexpr Change off = [](auto& unit) { unit.poweredOn = false; };
    check({
        { KEY_SOURCE, { hideFavourites, PageKey { mbMainMenu, 6, 2 } }, bars, 2 },
        { KEY_SOURCE, { PowerRequest { true } }, off, originWiredRemote },
        { KEY_SOURCE, { PageKey { mbMainMenu, 6 } }, off },
        { KEY_REMOTE_POWER_OFF, { PowerRequest { false } } },
        { KEY_MMS1, { hideFavourites, PageKey { mbSetup, 35 } }, bars },
        { KEY_MENU, { PageKey { mbMainMenu, 42 } }, menu },
        { KEY_MENU, { toRadio(255) }, [](auto& unit) { front(unit, mbSetup, AppSetup); } },
        { KEY_MENU, { hideFavourites, toRadio(42) }, [](auto& unit) { bars(unit), camera(unit); } },
        { KEY_MENU, { toRadio(42), ShowPage { mbWB } }, [](auto& unit) { camera(unit), unit.normalPage = mbWB; } },
        { KEY_MENU, { toRadio(42) }, [](auto& unit) { camera(unit), unit.normalPage = mbAM; } },
        { KEY_SHOWCAMERA, { hideFavourites, PageKey { mbCamera, 61 } }, bars },
        { KEY_RETURN, { PageKey { mbMainMenu, 66 } }, menu },
        { KEY_RETURN, { hideFavourites }, [](auto& unit) { bars(unit), menu(unit); } },
        { KEY_RETURN, { lowBatteryAlertOff }, [](auto& unit) { bars(unit), unit.lowBatteryAlert = true; } },
        { KEY_SHOWVERSION, { PageKey { mbSetup, 67 } } },
        { KEY_SHOWVERSION, { ProgramKey { AppSirius, 67 } }, satellite },
        { KEY_AMS1, { PageKey { mbSetup, 55 } }, satellite },
        { KEY_POWER, {} },
        { KEY_REQUESTSHOWMENU, {} },
    });
}

TEST(KeyTable, TheVolumeBarIsClosedButForTheKeysThatAreAboutIt)
{
    constexpr Change shown = [](auto& unit) { unit.volumeBarShown = true; };
    check({
        { KEY_VOLUME_DOWN, { VolumeStep { -1 } }, shown },
        { KEY_PLAYPAUSE, { toggleMute }, shown },
        { KEY_PLAYPAUSE,
          { ProgramKey { AppUSB, 2 }, closeVolumeBar },
          [](auto& unit) { unit.volumeBarShown = true, normal(unit, mbUSBAudio, AppUSB); } },
        { KEY_ROTARY_NEXT, { toRadio(80) }, shown },
        { KEY_ROTARY_ENTER, { toRadio(54), closeVolumeBar }, shown },
        { KEY_ROTARY_ENTER, { toRadio(54) }, [](auto& unit) { unit.volumeBarShown = unit.zone2On = true; } },
        { KEY_SOURCE, { PageKey { mbMainMenu, 6 }, closeVolumeBar }, shown },
        { 254, { closeVolumeBar }, shown },
    });
}

TEST(KeyTable, FavouritesBar)
{
    constexpr Change stored = [](auto& unit) { bars(unit), unit.favouriteStored = true, unit.favouritePage = mbFM; };
    check({
        { KEY_FAVORITIES,
          { SelectFavourite { 5, true } },
          [](auto& unit) { satellite(unit), camera(unit), unit.favouritesBarIndex = 5; } },
        { KEY_FAVORITIES,
          { FavouriteMessage { AppSirius, FavouriteMessage::open, 5 } },
          [](auto& unit) { satellite(unit), unit.favouritesBarIndex = 5; } },
        { KEY_FAVORITIES, { hideFavourites }, bars },
        { KEY_ROTARY_PRE, { SelectFavourite { 2 } }, bars },
        { KEY_ROTARY_NEXT, { SelectFavourite { 1 } }, [](auto& unit) { bars(unit), unit.favourite = 16; } },
        { KEY_ROTARY_PRE, { SelectFavourite { 16 } }, [](auto& unit) { bars(unit), unit.favourite = 1; } },

        { KEY_AMS1, { FavouriteMessage { AppRadio, FavouriteMessage::store, 3 } }, bars },
        { KEY_SHOWVERSION, { toRadio(67, 3) }, stored },
        { KEY_ROTARY_ENTER, {}, bars },
        { KEY_ROTARY_ENTER, { emptySlotNotice }, [](auto& unit) { bars(unit), satellite(unit); } },
        { KEY_ROTARY_ENTER, { hideFavourites, FavouriteMessage { AppRadio, FavouriteMessage::play, 3 } }, stored },
        { KEY_ROTARY_ENTER,
          { hideFavourites, PageKey { mbAM, 54, 3 } },
          [](auto& unit) { bars(unit), unit.favouriteStored = true, unit.favouritePage = mbAM; } },
        { KEY_ROTARY_ENTER,
          { hideFavourites, FavouriteMessage { AppRadio, FavouriteMessage::play, 3 }, PageKey { mbSirius, 54, 3 } },
          [](auto& unit)
          { bars(unit), unit.favouriteStored = true, unit.favouritePage = mbSirius, unit.lastSourcePage = mbCamera; } },
    });
}
