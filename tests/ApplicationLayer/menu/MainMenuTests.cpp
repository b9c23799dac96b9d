#include "ApplicationLayer/menu/MainMenuApplication.h"

#include "EngineApi/KeyCodes.h"
#include "EngineApi/Programs.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "platform/settings/SetupIndex.h"
#include "support/ApplicationFixture.h"

using namespace ApplicationLayer;
using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

/** The menu among fake pages. */
class MainMenuTest : public ApplicationFixture
{
protected:
    MainMenuTest()
        : ApplicationFixture("281 = 1\n284 = \"Stern\"\n", { mbFM, mbBTPhone, mbSirius })
    {
        add(&menu, Kernel::mainMenuApplicationId);
        connect(AppMainMenu);
        connect(AppRadio);
        playing(mbFM);
        takePosted();
    }
    void toMenu(juce::int32 id, juce::int32 arg1 = 0, juce::int32 arg2 = 0) { toPage(mbMainMenu, id, arg1, arg2); }
    void key(int code, int value = 0) { toMenu(Kernel::MSG_APP_KEY, code, value); }
    void command(int which, int value = 0)
    {
        send(Kernel::mainMenuApplicationId, Kernel::MSG_MENU_COMMAND, which, value);
    }

    MainMenuApplication& menu = *new MainMenuApplication;
};

} // namespace

TEST_F(MainMenuTest, IsWalkedThroughAndReturnsToTheSourceWhenNobodyTouchesIt)
{
    auto& timers = timersOf(mbMainMenu);
    key(KEY_INFOBAR_SWITCH_SPEAKER);
    EXPECT_EQ(timers.getTimerInterval(MainMenuHandler::idleTimer), 5000);
    fire(timers, MainMenuHandler::idleTimer);
    key(KEY_RETURN);
    EXPECT_THAT(requests(), IsEmpty()); // the menu is not on top
    carryOut(mbMainMenu, SwitchType::ToRun, { 1, 0, 0, 0 });
    takePosted();
    takeSent();
    key(KEY_SOURCE, 2);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppMainMenu, RMSG_KEY, KEY_SOURCE, 221 }));
    key(KEY_INFOBAR_SWITCH_SPEAKER);
    fire(timers, MainMenuHandler::idleTimer);
    EXPECT_FALSE(timers.isTimerRunning(MainMenuHandler::idleTimer));
    EXPECT_THAT(requests(), ElementsAre("mbFM run auto"));
}

/** A program that is closing is ended first; half a second later its page is shown. */
TEST_F(MainMenuTest, AChosenPageWaitsForTheEndOfItsProgram)
{
    monitor.setAppState(AppSirius, kClosing);
    toMenu(Kernel::MSG_MENU_PAGE, mbSirius);
    EXPECT_THAT(requests(), IsEmpty());
    auto& timers = timersOf(mbMainMenu);
    ASSERT_EQ(timers.getTimerInterval(MainMenuHandler::retryTimer), 500);
    monitor.setAppState(AppSirius, kDisconnect);
    fire(timers, MainMenuHandler::retryTimer);
    EXPECT_THAT(requests(), ElementsAre("mbSirius run"));
}

TEST_F(MainMenuTest, CarriesOutCommandsOfOtherPrograms)
{
    struct Case
    {
        int command, value;
        Texts requests;
        Texts sound {};
    };
    for (const auto& each : std::initializer_list<Case> {
             { 2, 0, {} }, // no rear page runs: there is nothing to show
             { 3, 0, {} }, // this unit has no navigation page
             { 4, 0, { "mbMainMenu run" } },
             { 5, 0, { "mbBTPhone run" } },
             { 11, 0, {} }, // the source is in front already
             { 12, 0, {}, { "volume + 1 1" } },
             { 12, 1, {}, { "volume - 1 1" } },
             { 12, 4, { "mbMainMenu run auto" } },
             { 12, 5, {}, { "mute on" } },
             { 12, 3, { "mbMainMenu run auto" } },
             { 99, 0, {} },
         })
    {
        command(each.command, each.value);
        EXPECT_EQ(requests(), each.requests) << each.command << " " << each.value;
        EXPECT_EQ(std::exchange(audio.calls, {}), each.sound) << each.command << " " << each.value;
    }

    // The source for a while, and back.
    send(Kernel::mainMenuApplicationId, Kernel::MSG_MENU_REMOTE_EVENT, 1);
    EXPECT_THAT(requests(), ElementsAre("mbFM show auto"));
    command(12, 3);
    EXPECT_THAT(requests(), ElementsAre("mbFM show auto"));
}

TEST_F(MainMenuTest, ShowsTheVolumeOfZone2)
{
    Dsp::DSPSettingHelperImpl::getInstance()->setVolume(17, true);
    command(12, 6);
    EXPECT_THAT(volumeBar.messages, ElementsAre(std::array { static_cast<int>(Kernel::MSG_VOLUME_SHOW), 2, 17 }));
    EXPECT_THAT(remote.calls, ElementsAre("clear row 1", "text 1 1 Stern Vol. 17 temporary", "restore after 2000"));
    setSettingInt(Platform::zone2OnSetting, 0, false, AppUnknown);
    command(12, 6);
    EXPECT_EQ(volumeBar.messages.size(), 1u);
}
