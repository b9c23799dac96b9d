#include "ApplicationLayer/setup/SetupApplication.h"

#include "ApplicationLayer/setup/SettingEffects.h"
#include "ApplicationLayer/setup/SetupHandler.h"
#include "ApplicationLayer/setup/SupplyVoltage.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/HostLink.h"
#include "EngineApi/KeyCodes.h"
#include "EngineApi/Remote.h"
#include "EngineLayer/hostlink/HostSessionManager.h"
#include "EngineLayer/settings/DataManager.h"
#include "lowlayer/HostcommDev.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SysInfoItems.h"
#include "support/ApplicationFixture.h"
#include "support/McuLink.h"

using namespace Platform;
using namespace ApplicationLayer;
using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

class SetupTest : public ApplicationFixture
{
protected:
    SetupTest()
        : ApplicationFixture("20 = 1\n285 = 2\n286 = 11\n287 = 9\n288 = 7\n")
    {
        addFakePages({ mbFM });
        add(LowLayer::HostcommDev::getInstance(), Kernel::hostcommDevId);
        add(HostSessionManager::getInstance(), Kernel::hostSessionManagerId);
        add(DataManager::getInstance(), Kernel::dataManagerId);
        DataManager::getInstance()->loadSystemFile();
        add(&setup, Kernel::setupApplicationId);
        connect(AppSetup);
        playing(mbFM);
        mcu.send({ 200, EVENT_GET_LAST_MEMORY, {} });
        commands();
        takePosted();
    }

    /** What the unit says to the microcontroller, as "18 12 12". */
    Texts commands()
    {
        Texts said;
        for (const auto& frame : mcu.converse([this] { run(); }))
        {
            said.push_back(std::to_string(frame.command));
            for (const auto value : frame.data)
                said.back() += " " + std::to_string(value);
        }
        return said;
    }

    Texts report(int command, McuLink::Bytes data)
    {
        McuLink::send({ ++sequence, command, std::move(data) });
        return commands();
    }
    Texts dimmer(int value)
    {
        const auto byte = static_cast<std::uint8_t>(value);
        return report(18, { byte, byte });
    }
    Texts voltage(int raw, int flags = 0)
    {
        return report(19, { static_cast<std::uint8_t>(raw), static_cast<std::uint8_t>(flags) });
    }

    /** A program or the network changes a setting. */
    Texts change(int index, int value)
    {
        setSettingInt(index, value, true, AppUnknown);
        return commands();
    }

    Bundle::Ptr show()
    {
        return order(mbSetup, SwitchType::ToRun, { 1, 0, 0, 0 }, CommandLine::genCmdPageShow(mbSetup, false));
    }

    McuLink mcu;
    int sequence = 0;
    SetupApplication& setup = *new SetupApplication;
};

} // namespace

TEST(DimmerTest, SettingsOutOfRangeAreLimited)
{
    const auto levels = [](const DimmerSettings& settings, bool lightsOn)
    { return std::pair(Dimmer::wantedLevel(settings, lightsOn), Dimmer::chooseMode(settings, lightsOn)); };
    EXPECT_EQ(levels({ 3, 9, 7 }, true), std::pair(11, 11)) << "an unknown mode";
    EXPECT_EQ(levels({ 1, 9, 200 }, true), std::pair(11, 5));
    EXPECT_EQ(levels({ 2, -3, 7 }, false), std::pair(0, 0));
}

TEST(DimmerTest, KeepsWhatTheUserMoves)
{
    using Store = Dimmer::Move::Store;
    const auto moved = [](int mode, bool lightsOn, int level)
    {
        const auto move = Dimmer::move({ mode, 9, 7 }, lightsOn, level);
        return std::pair(move.level, move.store);
    };
    EXPECT_EQ(moved(0, false, 3), std::pair(11, Store::nothing));
    EXPECT_EQ(moved(1, false, 5), std::pair(5, Store::night));
    EXPECT_EQ(moved(1, false, 6), std::pair(6, Store::nothing));
    EXPECT_EQ(moved(2, false, 99), std::pair(11, Store::day));
    EXPECT_EQ(moved(2, true, 10), std::pair(5, Store::night));
}

TEST(SupplyVoltageTest, AtTheLimitNothingChanges)
{
    for (const bool low : { false, true })
    {
        EXPECT_EQ(SupplyVoltage::isLow(low, 10.5), low);
        EXPECT_TRUE(SupplyVoltage::isLow(low, 106 * voltsPerStep));
        EXPECT_FALSE(SupplyVoltage::isLow(low, 107 * voltsPerStep));
    }
}

/** Before the lights are known, the microcontroller's level is taken over; afterwards the unit has the last word. */
TEST_F(SetupTest, DimmerAgreesWithTheMicrocontroller)
{
    EXPECT_THAT(dimmer(4), IsEmpty());
    EXPECT_EQ(getSettingInt(dimmerLevelSetting), 3);
    EXPECT_THAT(remote.calls, ElementsAre("dimmer 4"));
    EXPECT_THAT(dimmer(0), IsEmpty());
    EXPECT_THAT(report(18, { 7 }), IsEmpty());
    EXPECT_EQ(getSettingInt(dimmerLevelSetting), 3);

    EXPECT_THAT(voltage(125), ElementsAre("18 10 10"));
    EXPECT_THAT(voltage(125, 2), ElementsAre("18 8 8"));
    EXPECT_THAT(voltage(126, 2), IsEmpty());
    EXPECT_THAT(dimmer(4), ElementsAre("18 8 8"));
    EXPECT_THAT(dimmer(8), IsEmpty());
    EXPECT_EQ(getSettingInt(dimmerLevelSetting), 7);

    // A bright night is kept although choosing its mode dims to 5.
    EXPECT_THAT(change(dimmerModeSetting, 1), ElementsAre("18 6 6"));
    EXPECT_THAT(dimmer(6), ElementsAre("18 8 8"));
    EXPECT_THAT(change(dimmerLevelSetting, 2), ElementsAre("18 3 3"));
    EXPECT_EQ(getSettingInt(nightLevelSetting), 2);
    EXPECT_THAT(voltage(126, 0), IsEmpty()); // the lights count in the third mode only
    EXPECT_THAT(change(dimmerModeSetting, 2), ElementsAre("18 10 10"));
    EXPECT_THAT(change(dimmerLevelSetting, 4), ElementsAre("18 5 5"));
    EXPECT_EQ(getSettingInt(dayLevelSetting), 4);
    EXPECT_EQ(remote.calls.size(), 2u);
    EXPECT_THAT(change(dimmerModeSetting, 0), ElementsAre("18 12 12"));
    EXPECT_THAT(dimmer(11), ElementsAre("18 12 12"));
    EXPECT_THAT(dimmer(12), IsEmpty());
}

TEST_F(SetupTest, WatchesTheSupply)
{
    const auto alerts = [this](int raw)
    {
        audio.calls.clear();
        voltage(raw);
        return audio.calls;
    };
    EXPECT_THAT(alerts(107), IsEmpty());
    EXPECT_THAT(alerts(106), ElementsAre("alert on"));
    EXPECT_THAT(alerts(90), IsEmpty());
    EXPECT_THAT(alerts(107), ElementsAre("alert off"));
    change(lowBatterySetting, 0);
    EXPECT_THAT(alerts(106), IsEmpty());
    change(lowBatterySetting, 1);
    EXPECT_THAT(audio.calls, ElementsAre("alert on"));
    EXPECT_THAT(report(19, { 200 }), IsEmpty());

    constexpr int value = Kernel::MSG_VOLTMETER_VALUE;
    EXPECT_THAT(favouriteBar.messages,
                ElementsAre(std::array { value, 107, 0 }, std::array { value, 106, 0 }, std::array { value, 90, 0 },
                            std::array { value, 107, 0 }, std::array { value, 106, 0 }));
    voltage(106);
    EXPECT_EQ(favouriteBar.messages.size(), 5u);
    EXPECT_EQ(VX_GetSysInfo(sysInfoVoltage), 106);

    voltage(106, 1);
    EXPECT_TRUE(getDeviceState(triggerInput));
    voltage(106, 0);
    EXPECT_FALSE(getDeviceState(triggerInput));
}

TEST_F(SetupTest, SettingsTakeEffect)
{
    struct Case
    {
        int index, value;
        Texts sound;
        int receiver = 0, message = 0;
    };
    for (const auto& each : std::initializer_list<Case> {
             { sourceLevelSetting, 2, { "source level" } },
             { tunerRegionSetting, 3, {}, Kernel::radioApplicationId, Kernel::MSG_RADIO_REGION },
             { filtersSetting, 5, { "switch 0 1", "switch 1 1" } },
             { highPassSetting, 2, { "high-pass 2" } },
             { subwooferSetting, 1, { "subwoofer" } },
             { faderSetting, 3, { "fader" }, Kernel::navicoManagerId, Kernel::MSG_NAVICO_REPORT },
             { balanceSetting, 3, { "balance" }, Kernel::navicoManagerId, Kernel::MSG_NAVICO_REPORT },
             { zone2OnSetting, 1, { "zone 2" } },
             { zone2OutputSetting, 1, { "zone 2 output mode" } },
             { zone2VolumeSetting, 1, { "zone 2 volume mode" } },
             { zone2NameSetting, 1, {}, Kernel::navicoManagerId, Kernel::MSG_NAVICO_SETUP_REPORT },
             { nightLevelSetting, 1, {} },
             { trebleSetting, 1, { "preset" }, Kernel::navicoManagerId, Kernel::MSG_NAVICO_REPORT },
             { subwooferLevelSetting, 5, { "subwoofer level 5" }, Kernel::navicoManagerId, Kernel::MSG_NAVICO_REPORT },
             { firstBandSetting, 9, { "band 0 9" } },
             { lastBandSetting, 4, { "band 6 4" } },
             { presetSetting, 4, { "preset" }, Kernel::navicoManagerId, Kernel::MSG_NAVICO_REPORT },
             { dmeSetting, 1, { "dme on" } },
         })
    {
        SCOPED_TRACE(each.index);
        EXPECT_THAT(change(each.index, each.value), IsEmpty());
        EXPECT_EQ(std::exchange(audio.calls, {}), each.sound);
        if (each.receiver != 0)
            expectPosted(each.receiver, each.message, each.index == tunerRegionSetting ? each.value : 0, 0);
        expectNothingPosted();
        const auto sent = IpcDouble::takePosted(AppSetup);
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(std::tuple(sent[0].what, sent[0].arg1, sent[0].arg2),
                  std::tuple(static_cast<juce::int32>(RMSG_SETTING_NOTIFY), 2, each.index));
        EXPECT_EQ(sent[0].bundle->getInt("value", -1), each.value);
    }
    change(voltmeterSetting, 1);
    EXPECT_EQ(VX_GetSysInfo(sysInfoVoltageShown), 1);
    EXPECT_THAT(favouriteBar.messages, ElementsAre(std::array { static_cast<int>(Kernel::MSG_VOLTMETER_SHOW), 1, 0 }));
}

TEST_F(SetupTest, WithoutItsProgramSomeSettingsAreLeftAlone)
{
    IpcDouble::setPresent(AppSetup, false);
    run();
    EXPECT_THAT(change(dimmerModeSetting, 1), IsEmpty());
    EXPECT_THAT(change(dimmerLevelSetting, 4), ElementsAre("18 5 5"));
}

TEST_F(SetupTest, NoSourceComesWhenThePageWasLeftBefore)
{
    show();
    key(mbSetup, KEY_INFOBAR_SWITCH_SPEAKER);
    order(mbSetup, SwitchType::ToStop, {});
    fire(timersOf(mbSetup), SetupHandler::idleTimer);
    EXPECT_THAT(requests(), IsEmpty());
}

TEST_F(SetupTest, FactoryResetFromAnyPage)
{
    const juce::File folder(AppConfig::getSystemFilePath());
    const auto leftover = folder.getChildFile("VX_Volume.ini");
    leftover.create();
    change(dayLevelSetting, 3);
    takePosted();

    key(mbSetup, KEY_PLAYPAUSE_LONGPRESS);
    const auto posted = takePosted();
    EXPECT_THAT(requestsIn(posted), ElementsAre("mbSetup run"));
    std::vector<int> told;
    for (const auto& each : posted)
        if (each.id == Kernel::MSG_FACTORY_RESET)
            told.push_back(each.receiver);
    EXPECT_THAT(told, ElementsAre(3, 10, 21));
    EXPECT_THAT(audio.calls, ElementsAre("mute on"));
    EXPECT_THAT(commands(), ElementsAre("18 12 12"));
    EXPECT_TRUE(show()->getBool("showReset", false));
    EXPECT_EQ(show(), nullptr); // once

    EXPECT_EQ(timersOf(mbSetup).getTimerInterval(SetupHandler::resetTimer), 5000);
    fire(timersOf(mbSetup), SetupHandler::resetTimer);
    EXPECT_THAT(commands(), ElementsAre("21 1"));
    EXPECT_TRUE(folder.isDirectory());
    EXPECT_EQ(folder.getNumberOfChildFiles(juce::File::findFilesAndDirectories), 0);
    EXPECT_EQ(getSettingInt(dayLevelSetting), 9);

    // Asked again, with the page in front and the sound off; without factory values nothing is deleted.
    leftover.create();
    juce::File(AppConfig::getResourcePath()).getChildFile("factory-settings.toml").deleteFile();
    key(mbSetup, KEY_PLAYPAUSE_LONGPRESS);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppSetup, RMSG_SETTING_NOTIFY, 10 }));
    EXPECT_THAT(requests(), IsEmpty());
    EXPECT_EQ(audio.calls.size(), 1u);
    fire(timersOf(mbSetup), SetupHandler::resetTimer);
    EXPECT_THAT(commands(), ElementsAre("18 12 12", "21 1"));
    EXPECT_TRUE(leftover.existsAsFile());
}
