#include "ProjectDepend/FavoriteBar.h"

#include "EngineApi/Provided.h"
#include "doubles/OverlayDouble.h"
#include "kernel/MessageIds.h"
#include "platform/config/Resources.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"
#include "platform/settings/SysInfo.h"
#include "platform/settings/SysInfoItems.h"
#include "support/FakeDevices.h"
#include "support/LogCapture.h"
#include "support/Pump.h"
#include "support/ScratchUnit.h"

#include <gmock/gmock.h>
#include <thread>

using namespace Platform;
using namespace Kernel;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

struct Favourite
{
    int number, page;
    const char *icon, *label, *information;
};

/** Of every band one, then one without a label, one of another page, one of none; 9 and 16 are in the second group. */
constexpr std::array someFavourites {
    Favourite { 1, 52, "fm", "Harbour", "1  FM Harbour" },
    Favourite { 2, 53, "am", "Coast", "2  AM Coast" },
    Favourite { 3, 54, "wx", "WX 3", "3  WB WX 3" },
    Favourite { 4, 18, "sxm", "Sea Blues", "4  SXM Sea Blues" },
    Favourite { 5, 42, "dab", "Digital", "5  DAB Digital" },
    Favourite { 6, 52, "fm", "", "6  FM " },
    Favourite { 7, 16, "", "Cable", "7   Cable" },
    Favourite { 8, 0, "", "", "8   " },
    Favourite { 9, 52, "fm", "Nine", "9  FM Nine" },
    Favourite { 16, 53, "am", "Last", "16  AM Last" },
};

juce::String settingsOf(const Favourite& favourite)
{
    return juce::String(favouritePageSetting(favourite.number)) + " = " + juce::String(favourite.page) + "\n" +
           juce::String(favouriteLabelSetting(favourite.number)) + " = " + juce::String(favourite.label).quoted() +
           "\n";
}

class FavoriteBarTest : public testing::Test
{
protected:
    FavoriteBarTest()
    {
        juce::String settings;
        for (const auto& each : someFavourites)
            settings << settingsOf(each);
        ScratchUnit::emptySettings(settings);
        VX_SetSysInfo(sysInfoVoltageShown, 1);
        VX_SetSysInfo(sysInfoVoltage, 128);
        EXPECT_TRUE(CVXResPathManager::getInstance()->addResPath(HEADUNIT_BUILD_DIR "/resources/MainRes.spp", {}));
        EngineApi::Provided<EngineApi::WiredRemote>::set(&remote);
        bar = std::make_unique<Bar::FavoriteBar>();
    }
    ~FavoriteBarTest() override
    {
        bar.reset();
        EngineApi::Provided<EngineApi::WiredRemote>::set(nullptr);
        ResourceAutoDelete();
    }

    void say(int id, int arg1 = 0, int arg2 = 0) { bar->postMessage(id, arg1, arg2, nullptr); }
    void select(int favourite, int camera = 0) { say(MSG_FAVOURITES_SELECT, favourite, camera); }
    void touchOutside()
    {
        doubles::OverlayDouble::touch(0x1234);
        pump();
    }

    template <typename Control = juce::Component>
    Control& find(const juce::String& name)
    {
        return *CVXRelationHelper::findComponent<Control>(bar.get(), name);
    }
    CVXButton& button(int favourite) { return find<CVXButton>("Btn_favorites" + juce::String(favourite)); }
    std::string voltage() { return find<CVXStatic>("StVoltaValue").getContent().getText().toStdString(); }

    /** What a person sees: groups, selected favourites, the notice, the voltage; "" while the bar is hidden. */
    std::string seen()
    {
        EXPECT_EQ(bar->isVisible(), bar->isShown());
        if (!bar->isShown())
            return {};
        juce::StringArray parts;
        for (const auto* name : { "gp_one", "gp_two" })
            if (find(name).isVisible())
                parts.add(name);
        for (int favourite = 1; favourite <= 16; ++favourite)
            if (button(favourite).getPicture().getName() == "farvoritebar\\fav_button_p.png")
                parts.add(juce::String(favourite));
        if (find("gp_alert").isVisible())
            parts.add("empty!");
        if (find("StVoltaValue").isVisible())
            parts.add(voltage());
        return parts.joinIntoString(" ").toStdString();
    }
    int timerMs(int timer) const { return bar->isTimerRunning(timer) ? bar->getTimerInterval(timer) : 0; }
    std::vector<int> stored() const
    {
        std::vector<int> indexes;
        for (int favourite = -1; favourite <= 40; ++favourite)
            if (bar->isStored(favourite))
                indexes.push_back(favourite);
        return indexes;
    }

    LogCapture log;
    FakeRemote remote;
    std::unique_ptr<Bar::FavoriteBar> bar;
};

} // namespace

/** Somebody turns the control, meets an empty place, has the camera come and go, and looks at the battery meanwhile. */
TEST_F(FavoriteBarTest, ShowsTheSelectionForItsTime)
{
    const auto info = [](int index, int value) { return [=] { VX_SetSysInfo(index, value); }; };
    const struct
    {
        const char* story;
        std::function<void()> action;
        std::string seen;
        int showMs, alertMs; ///< 0 when the timer does not run
    } steps[] {
        { "the voltage is for a bar that is shown", [&] { say(MSG_VOLTMETER_VALUE, 255), say(MSG_VOLTMETER_SHOW, 0); },
          "", 0, 0 },
        { "first group", [&] { select(8); }, "gp_one 8 12.7v", 10000, 0 },
        { "second group", [&] { select(9); }, "gp_two 9 12.7v", 10000, 0 },
        { "an empty place", [&] { say(MSG_FAVOURITES_EMPTY_SLOT); }, "gp_two 9 empty! 12.7v", 10000, 3000 },
        { "its notice is over", [&] { bar->timerCallback(Bar::FavoriteBar::alertTimer); }, "gp_two 9 12.7v", 10000, 0 },
        { "again", [&] { say(MSG_FAVOURITES_EMPTY_SLOT); }, "gp_two 9 empty! 12.7v", 10000, 3000 },
        { "over the camera", [&] { select(16, 1); }, "gp_two 16 12.7v", 5000, 0 },
        { "a new voltage", [&] { say(MSG_VOLTMETER_VALUE, 136); }, "gp_two 16 12.8v", 5000, 0 },
        { "hidden", [&] { say(MSG_VOLTMETER_SHOW, 0); }, "gp_two 16", 5000, 0 },
        { "shown", [&] { say(MSG_VOLTMETER_SHOW, 2); }, "gp_two 16 12.8v", 5000, 0 },
        { "the time is over", [&] { bar->timerCallback(Bar::FavoriteBar::showTimer); }, "", 0, 0 },
        { "no voltage is wanted", info(sysInfoVoltageShown, 0), "", 0, 0 },
        { "back", [&] { select(1, 2); }, "gp_one 1", 10000, 0 },
        { "no such place", [&] { select(0), select(17), select(INT32_MIN); }, "gp_one 1", 10000, 0 },
        { "a foreign message", [&] { say(MSG_VOLUME_SHOW, 4); }, "gp_one 1", 10000, 0 },
        { "told to hide with a notice", [&] { say(MSG_FAVOURITES_EMPTY_SLOT), say(MSG_FAVOURITES_HIDE); }, "", 0, 0 },
        { "once more", [&] { select(2); }, "gp_one 2", 10000, 0 },
        { "touch outside", [&] { touchOutside(); }, "", 0, 0 },
    };
    for (const auto& step : steps)
    {
        SCOPED_TRACE(step.story);
        step.action();
        EXPECT_EQ(seen(), step.seen);
        EXPECT_EQ(timerMs(Bar::FavoriteBar::showTimer), step.showMs);
        EXPECT_EQ(timerMs(Bar::FavoriteBar::alertTimer), step.alertMs);
    }
    EXPECT_EQ(bar->getCurrentIndex(), 2);
}

TEST_F(FavoriteBarTest, TakesTheFavouritesFromTheSettingsAndTellsTheRemote)
{
    EXPECT_EQ(bar->getCurrentIndex(), 1);
    EXPECT_THAT(stored(), IsEmpty());
    select(4);
    EXPECT_THAT(stored(), ElementsAre(1, 2, 3, 4, 5, 9, 16));
    EXPECT_THAT(remote.calls,
                ElementsAre("clear", "text 0 0 Favorites temporary", "text 1 0 4  SXM Sea Blues temporary"));
    for (const auto& each : someFavourites)
    {
        SCOPED_TRACE(each.number);
        const auto& icon = button(each.number).getIcon();
        EXPECT_EQ(icon.getName(),
                  *each.icon == 0 ? juce::String() : "farvoritebar\\" + juce::String(each.icon) + ".png");
        EXPECT_EQ(icon.isLoaded(), *each.icon != 0);
        EXPECT_TRUE(button(each.number).getPicture().isLoaded());
        EXPECT_EQ(button(each.number).getText(0), each.label);
        select(each.number);
        EXPECT_EQ(remote.calls.back(), "text 1 0 " + std::string(each.information) + " temporary");
    }

    // One stored and one deleted meanwhile are known with the next refresh, which leaves the selection as it is.
    select(9);
    VX_SetSetupValueInt(favouritePageSetting(1), Pubhead::NUM_OF_PAGES);
    VX_SetSetupValueString(favouriteLabelSetting(6), "New");
    bar->refresh();
    EXPECT_THAT(stored(), ElementsAre(2, 3, 4, 5, 6, 9, 16));
    EXPECT_FALSE(button(1).getIcon().isLoaded());
    EXPECT_EQ(seen(), "gp_two 9 12.7v");
}

TEST_F(FavoriteBarTest, OffersOneToSixteen)
{
    EXPECT_EQ(bar->getFavoriteCount(), 1);
    for (const auto& [offered, kept] : { std::pair(0, 1), { 16, 16 }, { 17, 16 }, { -1, 16 }, { 1, 1 } })
    {
        bar->setFavoriteCount(offered);
        EXPECT_EQ(bar->getFavoriteCount(), kept) << offered;
    }
    EXPECT_EQ(log.take().size(), 3u);
}

TEST_F(FavoriteBarTest, OtherThreadsAskAtOnceAndAreHeardOnTheMessageThread)
{
    std::atomic<bool> turning { true };
    std::thread engine(
        [&]
        {
            while (turning)
                if (bar->isShown() && bar->getCurrentIndex() > 8 && bar->isStored(9))
                    bar->setFavoriteCount(9);
        });
    std::thread([this] { select(3), select(9), bar->refresh(); }).join();
    EXPECT_EQ(seen(), "");
    pump();
    EXPECT_EQ(seen(), "gp_two 9 12.7v");
    EXPECT_EQ(remote.calls.size(), 9u);
    EXPECT_TRUE(pumpUntil([this] { return bar->getFavoriteCount() == 9; }));
    turning = false;
    engine.join();

    // The bar has gone when this refresh comes, and so has its text.
    std::thread([this] { say(MSG_FAVOURITES_HIDE), bar->refresh(); }).join();
    pump();
    EXPECT_EQ(remote.calls.back(), "restore");
    remote.calls.resize(9);

    std::thread([this] { select(4), bar->refresh(); }).join();
    bar.reset();
    pump(); // What was on the way to the bar is lost with it.
    EXPECT_EQ(remote.calls.size(), 9u);
}

TEST_F(FavoriteBarTest, WithoutAnythingAroundItKeepsItsState)
{
    bar.reset();
    CVXResPathManager::getInstance()->clear();
    EngineApi::Provided<EngineApi::WiredRemote>::set(nullptr);
    bar = std::make_unique<Bar::FavoriteBar>();
    select(12);
    for (const int id : { MSG_FAVOURITES_EMPTY_SLOT, MSG_VOLTMETER_SHOW, MSG_VOLTMETER_VALUE })
        say(id, 1);
    EXPECT_TRUE(bar->isShown());
    EXPECT_EQ(bar->getCurrentIndex(), 12);
    EXPECT_TRUE(bar->isStored(9));
    bar->timerCallback(Bar::FavoriteBar::showTimer);
    EXPECT_FALSE(bar->isShown());
}
