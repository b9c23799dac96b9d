#include "EngineLayer/devices/DspNotices.h"
#include "EngineLayer/keys/KeyManager.h"

#include "EngineApi/DeviceStatus.h"
#include "EngineApi/KeyCodes.h"
#include "EngineApi/Settings.h"
#include "EngineLayer/settings/DataManager.h"
#include "doubles/LinesDouble.h"
#include "doubles/SystemDouble.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"
#include "support/FakeDevices.h"
#include "support/LogCapture.h"
#include "support/ScratchUnit.h"
#include "support/StateFixture.h"
#include "support/WithMcu.h"

using namespace Platform;
using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using Platform::doubles::LinesDouble;
using Platform::doubles::SystemDouble;
using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = McuLink::Bytes;

namespace
{

/** The radio plays in front; the key manager among fake devices, with the real link to the microcontroller. */
class KeyManagerTest : public WithMcu<StateFixture>, protected ProvidedFakes
{
protected:
    KeyManagerTest()
    {
        SystemDouble::reset();
        LinesDouble::reset();
        ScratchUnit::emptySettings(
            "7 = 1\n24 = 52\n25 = 53\n281 = 0\n286 = 11\n1028 = \"\"\n1031 = \"\"\n1042 = \"\"\n");
        add(&keys, Kernel::keyManagerId);
        enterNormalRun();
        complete(mbFM);
        connect(AppRadio);
        synchronise();
        SystemDouble::advanceTicks(1000);
    }

    ~KeyManagerTest() override
    {
        setLowBatteryAlert(false);
        setEnterTestMode(false);
    }

    /** A frame of the microcontroller. */
    void fromMcu(int command, const Bytes& data)
    {
        mcu.send({ sequence++ & 0xff, command, data });
        run();
    }
    void press(int key, int origin = originFrontPanel)
    {
        SystemDouble::advanceTicks(1000);
        fromMcu(EVENT_KEY, { static_cast<std::uint8_t>(origin), static_cast<std::uint8_t>(key) });
    }

    /** The key messages that pages got, as "mbCamera 65545 0". */
    Events pageKeys()
    {
        Events seen;
        for (const auto& each : takePosted())
            if (each.id == Kernel::MSG_APP_KEY)
                seen.push_back(std::string(pageName(each.handlerIndex)) + " " + std::to_string(each.arg1) + " " +
                               std::to_string(each.arg2));
        return seen;
    }

    /** A command of the test equipment. */
    void autoTest(const Bytes& parameters)
    {
        Bytes frame { 0xFF, 0xAA, 0x01, static_cast<std::uint8_t>(parameters.size() + 5) };
        frame.insert(frame.end(), parameters.begin(), parameters.end());
        frame.push_back(static_cast<std::uint8_t>(std::accumulate(frame.begin(), frame.end(), 0u)));
        fromMcu(EVENT_AUTOTEST_INFO, frame);
    }
    Events answers() { return session.takeAnswers(); }

    ScratchUnit unit;
    int sequence = 1;
    KeyManager& keys = *KeyManager::getInstance();
};

} // namespace

TEST_F(KeyManagerTest, ARepeatWithin60MsIsDroppedAndAReleaseNever)
{
    const Sent next { AppRadio, RMSG_KEY, KEY_NEXT };
    const Sent release { AppRadio, RMSG_KEY, KEY_RELEASE };
    press(KEY_NEXT);
    EXPECT_THAT(takeSent(), ElementsAre(next));
    SystemDouble::advanceTicks(59);
    fromMcu(EVENT_KEY, { 0, KEY_NEXT });
    fromMcu(EVENT_KEY, { originRelease, KEY_NEXT });
    EXPECT_THAT(takeSent(), ElementsAre(release));
    SystemDouble::advanceTicks(1); // counted from the key that was acted on
    fromMcu(EVENT_KEY, { 0, KEY_NEXT });
    fromMcu(EVENT_KEY, { 0, KEY_PRE });
    EXPECT_THAT(takeSent(), ElementsAre(next, Sent { AppRadio, RMSG_KEY, KEY_PRE }));
}

TEST_F(KeyManagerTest, EveryKeyIsNoticedAndCanBeTakenAsReturn)
{
    send(Kernel::keyManagerId, Kernel::MSG_KEY_RETURN_NEXT, 0);
    send(Kernel::keyManagerId, Kernel::MSG_KEY_RETURN_NEXT, 1);
    pageKeys();
    press(KEY_SHOWCAMERA);
    EXPECT_THAT(pageKeys(), ElementsAre("mbCamera 65545 0"));
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppRadio, RMSG_KEY, KEY_RETURN }));
    press(KEY_SHOWCAMERA);
    EXPECT_THAT(pageKeys(), ElementsAre("mbCamera 65545 0", "mbCamera 61 0"));
}

TEST_F(KeyManagerTest, PowerKeysSwitchTheSettingAndTheRemoteAsItsDimmerIsSet)
{
    EngineApi::setSettingInt(dimmerLevelSetting, 5, false, AppUnknown);
    press(KEY_POWER_OFF);
    EXPECT_EQ(getSettingInt(bluetoothSetting), 0);
    // While it is off the remote's keys ask the microcontroller for power.
    mcuHears();
    for (const int key : { KEY_SOURCE, KEY_REMOTE_POWER_OFF })
        send(Kernel::keyManagerId, Kernel::MSG_WIRED_REMOTE_KEY, originWiredRemote, key);
    EXPECT_THAT(mcuHears(), ElementsAre("5 00 07 00", "5 00 07 00"));
    press(KEY_POWER_ON);
    EXPECT_EQ(getSettingInt(bluetoothSetting), 1);
    EXPECT_THAT(remote.calls, ElementsAre("dimmer 0", "dimmer 6"));
    EXPECT_THAT(volumeBar.messages, IsEmpty()) << "nobody was told of the mute that ended";
    EngineLayer::announceMute(true);
    press(KEY_POWER_ON);
    press(KEY_POWER_ON);
    EXPECT_THAT(volumeBar.messages, ElementsAre(std::array<int, 3> { Kernel::MSG_VOLUME_SHOW, 3, 1 },
                                                std::array<int, 3> { Kernel::MSG_VOLUME_SHOW, 3, 0 }));
}

TEST_F(KeyManagerTest, ReturnOnlyEndsTheAlert)
{
    setLowBatteryAlert(true);
    volumeBar.shown = true;
    for (const int key : { KEY_VOLUME_UP, KEY_VOLUME_DOWN, KEY_PLAYPAUSE, KEY_RETURN })
        press(key);
    EXPECT_FALSE(isLowBatteryAlert());
    EXPECT_THAT(audio.calls, ElementsAre("alert on", "volume + 1 1", "volume - 1 1", "mute on", "alert off"));
    EXPECT_THAT(volumeBar.messages, ElementsAre(std::array { 1196, 0, 0 }));
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(KeyManagerTest, FavouritesGoToTheProgramThatPlays)
{
    for (const auto& [page, appType, message] :
         { std::array<int, 3> { mbFM, AppRadio, RMSG_FAVOURITE }, { mbSirius, AppSirius, RMSG_SXM_FAVOURITE } })
    {
        complete(page);
        connect(appType);
        favouriteBar.shown = true;
        press(KEY_ROTARY_NEXT);
        press(KEY_AMS1);
        EXPECT_THAT(takeSent(), ElementsAre(Sent { appType, message, 0, favouriteBar.messages.back()[1] }));
        favouriteBar.shown = false;
        press(KEY_FAVORITIES); // back to the bar's own
        takeSent();
    }
}

TEST_F(KeyManagerTest, KeysOfTheMcuWaitWhileASwitchIsUnderWayThoseOfTheRemoteDoNot)
{
    request(mbAM, AppAction::ToRun);
    ASSERT_TRUE(isSystemBusy());
    takeSent();
    press(KEY_NEXT);
    press(KEY_PRE);
    autoTest({ 0x00, 0x03, 0x00, 20 });
    EXPECT_THAT(takeSent(), IsEmpty());
    EXPECT_THAT(answers(), IsEmpty());
    send(Kernel::keyManagerId, Kernel::MSG_WIRED_REMOTE_KEY, originWiredRemote, KEY_NEXT_LONGPRESS);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppRadio, RMSG_KEY, KEY_NEXT_LONGPRESS }));
    answerAll();
    run();
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppRadio, RMSG_KEY, KEY_NEXT }, Sent { AppRadio, RMSG_KEY, KEY_PRE }));
    EXPECT_THAT(answers(), ElementsAre("00 03 00 14"));
}

// Keys that come faster than they can be acted on must neither pile up nor keep the unit busy with what is long past.
TEST_F(KeyManagerTest, AFloodOfKeysKeepsTheLastOnes)
{
    LogCapture log;
    request(mbAM, AppAction::ToRun);
    takeSent();
    for (int i = 0; i < 10'000; ++i)
    {
        LowLayer::BytePool::Ptr key = new LowLayer::BytePool(2, nullptr);
        key->assign(i % 2 == 0 ? "\0\3" : "\0\4", 2);
        Kernel::postSystemMessage(Kernel::keyManagerId, Kernel::MSG_HOST_EVENT, EVENT_KEY, 2, std::move(key));
    }
    step();
    press(KEY_NEXT_LONGPRESS);
    answerAll();
    run();
    const auto sent = takeSent();
    EXPECT_EQ(sent.size(), 16u);
    EXPECT_EQ(sent.back(), (Sent { AppRadio, RMSG_KEY, KEY_NEXT_LONGPRESS }));
    EXPECT_EQ(log.count("keys come faster than they are acted on; the oldest are dropped"), 1);
}

TEST_F(KeyManagerTest, TheDeviceIdIsStoredSentAndReadBack)
{
    LogCapture log;
    const std::string text = "ABC123456";
    Bytes command { 0x00, 0x04, static_cast<std::uint8_t>(text.size()) };
    command.insert(command.end(), text.begin(), text.end());
    mcuHears();
    autoTest(command);
    EXPECT_EQ(getSettingString(deviceIdSetting), "ABC123456");
    EXPECT_THAT(mcuHears(), ElementsAre("26 12 34 56"));
    EXPECT_THAT(answers(), ElementsAre("00 04 09 41 42 43 31 32 33 34 35 36"));
    ASSERT_EQ(keys.getTimerInterval(), 300);
    keys.timerCallback();
    EXPECT_FALSE(keys.isTimerRunning());
    EXPECT_THAT(mcuHears(), ElementsAre("27 "));
    fromMcu(EVENT_GET_DEVICE_ID, { 0x12, 0x34, 0x56 });
    fromMcu(EVENT_GET_DEVICE_ID, { 0x12, 0x34 });
    fromMcu(EVENT_GET_DEVICE_ID, { 0x12 });
    EXPECT_EQ(log.count("device id saved"), 1);
    EXPECT_EQ(log.count("device id differs from what was set"), 1);

    // Longer than the frame, without a length: nothing is stored, nothing answered. No six digits at the end: stored and
    // answered all the same, and the microcontroller keeps its id.
    struct Case
    {
        Bytes command;
        const char* stored;
        std::vector<std::string> answers {};
    };
    for (const auto& [bytes, stored, said] :
         { Case { { 0, 4, 255, '1', '2', '3', '4', '5', '6' }, "ABC123456" }, Case { { 0, 4 }, "ABC123456" },
           Case { { 0, 4, 6, '1', '2', '3', '4', '5', 'x' }, "12345x", { "00 04 06 31 32 33 34 35 78" } },
           Case { { 0, 4, 3, 0xC3, 0xFF, '1' }, "\xef\xbf\xbd\xef\xbf\xbd\x31", { "00 04 03 C3 FF 31" } },
           Case { { 0, 4, 0 }, "", { "00 04 00" } } })
    {
        autoTest(bytes);
        EXPECT_EQ(getSettingString(deviceIdSetting), juce::String::fromUTF8(stored));
        EXPECT_EQ(answers(), said) << stored;
    }
    EXPECT_FALSE(keys.isTimerRunning());
    EXPECT_THAT(mcuHears(), IsEmpty());
}

TEST_F(KeyManagerTest, TestModeIsEnteredOnceAndLeft)
{
    session.messages.emplace_back("x", 1);
    autoTest({ 0x82, 1 });
    EXPECT_TRUE(getEnterTestMode() && session.running);
    EXPECT_THAT(answers(), ElementsAre("00 03 00 1E", "82 01"));
    autoTest({ 0x82, 1 });
    EXPECT_THAT(answers(), IsEmpty());
    autoTest({ 0x82, 0 });
    EXPECT_FALSE(getEnterTestMode());
    EXPECT_THAT(answers(), ElementsAre("82 00"));
}

TEST_F(KeyManagerTest, TheTestEquipmentPressesKeysAndSetsTheVolume)
{
    struct Case
    {
        Bytes command;
        std::vector<std::string> answers;
        std::vector<std::string> sound {};
        std::vector<std::string> mcu {};
        std::vector<Sent> programs {};
        Events pages {};
    };
    const std::string notice = "mbCamera 65545 0";
    const std::vector<Case> cases {
        { { 0, 0, 1, 0 }, { "00 00 01 00 01" }, { "mute on" } },
        { { 0, 0, 12 }, { "00 00 0C 00 01" }, { "volume - 1 1" } },
        { { 0, 0, 13, 9 }, { "00 00 0D 09 01" }, { "volume + 1 1" } },
        { { 0, 0, 3, 0 }, { "00 00 03 00 01" }, {}, {}, { { AppRadio, RMSG_KEY, KEY_PRE } }, { notice } },
        { { 0, 0, 6, 0 }, { "00 00 06 00 01" }, {}, {}, {}, { notice, "mbMainMenu 6 0" } },
        { { 0, 0, 23, 0 }, { "00 00 17 00 01" }, {}, {}, { { AppRadio, RMSG_KEY, KEY_MENU } }, { notice } },
        { { 0, 0, 5, 0 }, { "00 00 05 00 00" } },
        { { 0, 0, 14, 1 }, { "00 00 0E 01 01" }, {}, { "5 00 08 00" } },
        { { 0, 0, 14, 0 }, { "00 00 0E 00 01", "82 02" }, {}, { "5 00 07 00" } },
        { { 0, 3, 0, 20 }, { "00 03 00 14" }, { "volume 20 1" } },
        { { 0, 3, 1, 20 }, {} },
        { { 0, 2 }, { "00 02 02" } },
        { { 6, 4, 8, 1 }, { "06 04 08 01" }, {}, {}, {}, { "mbSetup 130 0" } },
        { { 6, 4, 8, 2 }, { "06 04 08 02" } },
        { { 9, 1 }, {} },
        { { 0, 9 }, {} },
        { { 0x83, 0xFF }, {} },
    };
    setDeviceState(spareDevice, true);
    mcuHears();
    pageKeys();
    audio.calls.clear();
    for (const auto& each : cases)
    {
        SCOPED_TRACE(hexPairs(each.command.data(), static_cast<int>(each.command.size())).toStdString());
        SystemDouble::advanceTicks(1000);
        autoTest(each.command);
        EXPECT_EQ(answers(), each.answers);
        EXPECT_EQ(std::exchange(audio.calls, {}), each.sound);
        EXPECT_EQ(mcuHears(), each.mcu);
        EXPECT_EQ(takeSent(), each.programs);
        EXPECT_EQ(pageKeys(), each.pages);
    }
    EXPECT_THAT(session.peerStates, ElementsAre(0xFF));
}

TEST_F(KeyManagerTest, TheTestEquipmentSelectsSourcesAndReadsTexts)
{
    autoTest({ 0, 1, 0, 0 }); // FM, which plays
    EXPECT_THAT(answers(), ElementsAre("00 01 00 00"));
    autoTest({ 0, 1, 10, 1 });
    answerAll();
    EXPECT_EQ(getNormalSource(), mbUSBAudio);
    EXPECT_THAT(answers(), IsEmpty()); // the page reports when it has changed
    autoTest({ 0, 1, 99, 0 });
    autoTest({ 0, 1, 10, 1 });
    EXPECT_THAT(answers(), ElementsAre("00 01 0A 01"));

    const auto text = [this](const juce::String& value)
    {
        setSettingString(osVersionSetting, value, false, AppUnknown);
        autoTest({ 7, 0 });
        const auto bytes = std::exchange(session.messages, {}).at(0);
        return std::string(static_cast<const char*>(bytes.getData()) + 2, bytes.getSize() - 2);
    };
    EXPECT_EQ(text("V1.0"), "V1.0");
    EXPECT_EQ(text(""), "");
    for (const int length : { 95, 98, 99, 255 })
        EXPECT_EQ(text(juce::String::repeatedString("x", length)), std::string(95, 'x')); // what a frame carries
    EXPECT_EQ(text(juce::String::repeatedString("x", 94) + juce::String::fromUTF8("\xC3\xA9")), std::string(94, 'x'));
    autoTest({ 7, 5 });
    EXPECT_THAT(answers(), ElementsAre("07 05"));
    autoTest({ 7, 13 });
    EXPECT_THAT(answers(), IsEmpty());
}

TEST_F(KeyManagerTest, CommandsForSourcesGoToTheirApplications)
{
    takePosted();
    for (const auto command : Bytes { 1, 4, 5 })
        autoTest({ command, 0x42 });
    std::vector<std::pair<int, std::string>> passed;
    for (const auto& each : takePosted())
        if (each.id == Kernel::MSG_AUTOTEST_COMMAND)
        {
            const auto* bytes = Kernel::payloadAs<LowLayer::BytePool>(each.payload);
            passed.emplace_back(each.receiver, hexPairs(bytes->dataPointer(), bytes->length()).toStdString());
        }
    EXPECT_THAT(passed, ElementsAre(std::pair(5, "01 42"), std::pair(7, "04 42"), std::pair(3, "05 42")));
}
