#include "EngineLayer/network/NavicoManager.h"

#include "EngineApi/NavicoCanApi.h"
#include "EngineLayer/settings/DataManager.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"
#include "support/ApplicationFixture.h"
#include "support/Golden.h"
#include "support/LogCapture.h"
#include "support/WithMcu.h"

using namespace Platform;
using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using Bytes = McuLink::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

/** As docs/marine-network.md says. */
constexpr const char* settings =
    "277 = 2\n279 = 3\n280 = 8\n281 = 1\n283 = 1\n284 = \"Cockpit\"\n1028 = \"\"\n1029 = \"\"\n"
    "1031 = \"\"\n1042 = \"\"\n1281 = 5\n1282 = 6\n1283 = 7\n1284 = 8\n1792 = 2\n";
constexpr int toneSettings[] = { highPassSetting, faderSetting,  balanceSetting,        bassSetting,
                                 middleSetting,   trebleSetting, subwooferLevelSetting, presetSetting };

Bytes bytesIn(const juce::String& text)
{
    juce::MemoryBlock block;
    block.loadFromHexString(text);
    const auto* first = static_cast<const std::uint8_t*>(block.getData());
    return { first, first + block.getSize() };
}

class NavicoManagerTest : public WithMcu<ApplicationFixture>
{
protected:
    NavicoManagerTest()
        : WithMcu(settings, std::initializer_list<int> { mbFM, mbUSBAudio, mbiPodAudio })
    {
        add(NavicoManager::getInstance(), Kernel::navicoManagerId);
        playing(mbFM);
        setUp();
        synchronise();
    }

    /** Volumes and settings as at first. */
    void setUp()
    {
        auto* volumes = Dsp::DSPSettingHelperImpl::getInstance();
        volumes->setVolume(20, false);
        volumes->setVolume(12, true);
        for (const auto& line : juce::StringArray::fromLines(settings))
            if (line.isNotEmpty() && !line.contains("\""))
                setSettingInt(line.getIntValue(), line.fromFirstOccurrenceOf("= ", false, false).getIntValue(), false,
                              AppUnknown);
        audio.calls.clear();
    }

    void hear(int command, const Bytes& data)
    {
        send(Kernel::navicoManagerId, Kernel::MSG_HOST_EVENT, command, 0, pooled(data));
    }

    /** One line of the document that begins with > or !. */
    void play(const juce::String& line)
    {
        const auto words = juce::StringArray::fromTokens(line.substring(1), " ", "");
        const auto what = words[1];
        if (line.startsWith("> "))
            hear(EVENT_PGN_SEND_CAN, bytesIn(line.substring(2)));
        else if (what == "volume")
            send(Kernel::navicoManagerId, Kernel::MSG_NAVICO_DEVICE_STATE, words[2].getIntValue(),
                 words[3].getIntValue());
        else if (what == "mute")
            send(Kernel::navicoManagerId, Kernel::MSG_NAVICO_DEVICE_STATE, 3, words[2] == "on" ? 1 : 0);
        else if (what == "tone" || what == "name")
            send(Kernel::navicoManagerId, what == "tone" ? Kernel::MSG_NAVICO_REPORT : Kernel::MSG_NAVICO_SETUP_REPORT);
        else
            ADD_FAILURE() << line;
    }

    /** What the unit did and said, as the document has it. */
    juce::StringArray effects()
    {
        juce::StringArray lines;
        for (const auto& call : audio.calls)
            lines.add("= " + juce::String(call));
        for (const int index : toneSettings)
            if (getSettingInt(index) != before[index])
                lines.add("= setting " + juce::String(index) + " " + juce::String(getSettingInt(index)));
        for (const auto& frame : mcuHears())
        {
            const auto command = juce::String(frame).upToFirstOccurrenceOf(" ", true, false);
            EXPECT_EQ(command.getIntValue(), EVENT_PGN_SEND_CAN);
            lines.add("< " + juce::String(frame).substring(command.length()).toLowerCase());
        }
        return lines;
    }

    /** Program, message and bytes. */
    using Relayed = std::vector<std::array<int, 3>>;
    static Relayed relayed()
    {
        Relayed all;
        for (const auto& each : IpcDouble::takePosted())
            all.push_back(
                { each.appType, each.what, static_cast<int>(RemoteObjFormat::getByteArray(each.bundle).getSize()) });
        return all;
    }

    std::map<int, int> before;
};

} // namespace

TEST_F(NavicoManagerTest, SpeaksAsTheDocumentSays)
{
    const auto document = juce::File(HEADUNIT_SOURCE_DIR).getChildFile("docs/marine-network.md").loadFileAsString();
    const auto block =
        document.fromFirstOccurrenceOf("```exchanges\n", false, false).upToFirstOccurrenceOf("```", false, false);
    juce::StringArray seen;
    for (const auto& line : juce::StringArray::fromTokens(block, "\n", ""))
    {
        if (line.startsWithChar('<') || line.startsWithChar('='))
            continue;
        seen.add(line);
        if (line.isEmpty())
            setUp();
        if (!line.startsWithChar('>') && !line.startsWithChar('!'))
            continue;
        for (const int index : toneSettings)
            before[index] = getSettingInt(index);
        audio.calls.clear();
        play(line);
        seen.addArray(effects());
    }
    EXPECT_GT(seen.size(), 100);
    expectGolden("../docs/marine-network.md", document.replace(block, seen.joinIntoString("\n")));
}

// In a frame of 102 bytes 73 are left for the name of zone 2, which are 36 of these letters.
TEST_F(NavicoManagerTest, FitsItsRecordsIntoAFrame)
{
    const auto name = juce::String::repeatedString(juce::CharPointer_UTF8("\xc3\xa4"), 100);
    setSettingString(zone2NameSetting, name, false, AppUnknown);
    const auto sizeAndName = [&](int lengthByteAt)
    {
        const auto words = juce::StringArray::fromTokens(juce::String(mcuHears().at(0)), " ", "");
        return std::pair(words.size() - 1, words[1 + lengthByteAt].getHexValue32());
    };
    constexpr int frameSize = 102, lengthAt = 6 + 3 + 9 + 1;
    const auto nameBytes = (frameSize - lengthAt - 2) / 2 * 2;
    send(Kernel::navicoManagerId, Kernel::MSG_NAVICO_SETUP_REPORT);
    EXPECT_EQ(sizeAndName(lengthAt), std::pair(lengthAt + 2 + nameBytes, nameBytes + 2));
    hear(EVENT_PGN_SEND_CAN, { 0x00, 0xEA, 0x00, 0x00, 0x23, 0x02, 0x0E, 0xFE, 0x01 });
    EXPECT_EQ(sizeAndName(lengthAt), std::pair(lengthAt + 2 + nameBytes, 6));

    setSettingInt(presetSetting, 5, false, AppUnknown);
    setSettingInt(highPassSetting, 4, false, AppUnknown);
    hear(EVENT_PGN_SEND_CAN, bytesIn("00 ed 01 00 23 02 00 15 fe 01 ff ff ff ff ff ff 01 01 01"));
    EXPECT_THAT(mcuHears(), ElementsAre("11 15 FE 01 00 23 02 01 64 FD 02 08 01 00 FF 01 78 00 00 00 00 00 00 00"))
        << "no code for the preset, the highest frequency there is";
}

TEST_F(NavicoManagerTest, RelaysMediaTrafficToItsProgram)
{
    struct Case
    {
        int source;
        int command;
        Bytes data;
        int program = AppUnknown; ///< that gets it, if any
    };
    const auto block = [](std::uint8_t type) { return Bytes { type, 0x00, 0x01, 0x02 }; };
    const auto isoRequest = [](std::uint8_t low) { return Bytes { 0x00, 0xEA, 0x00, 0x00, 0x23, 0x02, low, 0xFE, 1 }; };
    const auto groupRequest = [](std::uint8_t low)
    { return Bytes { 0x00, 0xED, 1, 0, 0x23, 2, 0, low, 0xFE, 1, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0 }; };
    for (const int app : { AppiPod, AppUSB, AppRadio, AppBluetooth })
        connect(app);
    const Case cases[] = { { mbFM, EVENT_DATA_SEND_CAN, block(13), AppiPod },
                           { mbFM, EVENT_DATA_SEND_CAN, block(16), AppiPod },
                           { mbFM, EVENT_DATA_SEND_CAN, block(17) },
                           { mbFM, EVENT_DATA_SEND_CAN, block(20) },
                           { mbFM, EVENT_DATA_SEND_CAN, block(32), AppUSB },
                           { mbFM, EVENT_DATA_SEND_CAN, block(35), AppUSB },
                           { mbFM, EVENT_DATA_SEND_CAN, { 13 } },
                           { mbFM, EVENT_DATA_SEND_CAN, {} },
                           { mbFM, EVENT_PGN_SEND_CAN, isoRequest(0x09), AppRadio },
                           { mbFM, EVENT_PGN_SEND_CAN, isoRequest(0x18), AppBluetooth },
                           { mbFM, EVENT_PGN_SEND_CAN, groupRequest(0x19), AppBluetooth },
                           { mbUSBAudio, EVENT_DATA_SEND_CAN, block(17), AppUSB },
                           { mbUSBAudio, EVENT_PGN_SEND_CAN, groupRequest(0x0A), AppUSB },
                           { mbUSBAudio, EVENT_PGN_SEND_CAN, groupRequest(0x0C), AppUSB },
                           { mbiPodAudio, EVENT_DATA_SEND_CAN, block(19), AppiPod } };
    for (const auto& each : cases)
    {
        if (getNormalSource() != each.source)
            playing(each.source);
        relayed();
        hear(each.command, each.data);
        const int message = each.command == EVENT_DATA_SEND_CAN ? RMSG_N2K_DATA : RMSG_N2K_PGN;
        const auto expected = each.program == AppUnknown
                                  ? Relayed {}
                                  : Relayed { { each.program, message, static_cast<int>(each.data.size()) } };
        EXPECT_EQ(relayed(), expected) << each.source << " " << testing::PrintToString(each.data);
    }
    EXPECT_THAT(mcuHears(), IsEmpty());
}

TEST_F(NavicoManagerTest, SendsWhatProgramsHaveForTheNetworkBehindItsOwn)
{
    const std::uint8_t bytes[] = { 0x09, 0xFE, 0x01 };
    const LogCapture log;
    for (const auto send : { sendCanData, sendPgnBundle, sendMediaInfo })
        for (const auto& bundle : { RemoteObjFormat::formatByteArray(bytes, 3), Bundle::obtain(), Bundle::Ptr() })
            send(bundle);
    EXPECT_EQ(log.count("TxPGNParcelToNavico::09 FE 01\n"), 1);
    Parcel own;
    own.writeByte(0x42);
    sendPgnParcel(own);
    EXPECT_EQ(own.dataSize(), 0);
    EXPECT_THAT(mcuHears(), ElementsAre("11 42", "7 09 FE 01", "11 09 FE 01", "12 09 FE 01"));
}

// The volume is turned while the link is busy: several reports wait, and what leaves last is how it is.
TEST_F(NavicoManagerTest, TheLastThatADisplayHearsOfAZoneIsTrue)
{
    for (const int volume : { 15, 18, 21, 24 })
    {
        send(Kernel::navicoManagerId, Kernel::MSG_NAVICO_DEVICE_STATE, 1, volume);
        send(Kernel::navicoManagerId, Kernel::MSG_NAVICO_DEVICE_STATE, 2, volume + 1);
    }
    for (const auto* name : { "Bow", "Flybridge" })
    {
        setSettingString(zone2NameSetting, name, false, AppUnknown);
        send(Kernel::navicoManagerId, Kernel::MSG_NAVICO_SETUP_REPORT);
    }
    const std::string head = "11 16 FE 01 00 FF 02 ";
    EXPECT_THAT(mcuHears(), ElementsAre(head + "01 1E F3", testing::EndsWith("46 6C 79 62 72 69 64 67 65"),
                                        head + "02 32 F3", head + "01 30 F3"));
}

TEST_F(NavicoManagerTest, TellsVersionsAndKeepsWhatItIsTold)
{
    Configuration::get().osVersion = "TRV_A6_V12_170601";
    hear(EVENT_SEND_VERSION, { 0 });
    EXPECT_EQ(getSettingString(osVersionSetting), "O12_170601");
    hear(EVENT_SEND_VERSION, { 3 });
    EXPECT_THAT(mcuHears(), ElementsAre("10 00 4F 31 32 5F 31 37 30 36 30 31")) << "no file, no answer";
    juce::File(AppConfig::getApplicationPath() + "Version.txt").replaceWithText("1.2\r\n\n");
    hear(EVENT_SEND_VERSION, { 3 });
    EXPECT_THAT(mcuHears(), ElementsAre("10 03 31 2E 32"));
    EXPECT_EQ(getSettingString(applicationVersionSetting), "1.2");
    hear(EVENT_SEND_VERSION, { 4, 'M', '7' });
    EXPECT_EQ(getSettingString(mcuVersionSetting), "M7");
    hear(EVENT_SET_DEVICE_ID_FROM_CAN, { 2, 'A', 'B', 'C' });
    EXPECT_EQ(getSettingString(deviceIdSetting), "AB");
    hear(EVENT_SET_DEVICE_ID_FROM_CAN, { 9, 'D' });
    EXPECT_EQ(getSettingString(deviceIdSetting), "D") << "no more than there is";
    for (const int command : { EVENT_SEND_VERSION, EVENT_SET_DEVICE_ID_FROM_CAN, EVENT_SETUP_FROM_CAN })
        hear(command, {});
    EXPECT_THAT(mcuHears(), IsEmpty());
}

// Three things ask for an update, and nothing that is almost one of them.
TEST_F(NavicoManagerTest, StartsAnUpdateForItsTriggersOnly)
{
    using doubles::ProcessDouble;
    const Bytes singleFrame { 0x00, 0xFF, 0, 0, 35, 0, 0xC0, 0x9A, 7, 0, 0xFF, 0xFF, 0xFF, 0xFF };
    const Bytes fastPacket {
        0x22, 0xFF, 1, 0, 36, 2, 0x41, 0x9F, 0, 0xFF, 0xFF, 0x31, 0x7D, 0, 0xFF, 0xFF, 0xFF, 0xFF
    };
    auto& manager = *NavicoManager::getInstance();
    ASSERT_TRUE(juce::File(Configuration::get().mediaRoot)
                    .getChildFile("Hard Disk/SW_Update/Bin/UpdateUtility.exe")
                    .create()
                    .wasOk());
    for (const auto& almost : { singleFrame, fastPacket })
        for (std::size_t i = 6; i < almost.size(); ++i)
        {
            auto wrong = almost;
            wrong.resize(i);
            hear(EVENT_PGN_SEND_CAN, wrong);
            wrong = almost;
            wrong[i] ^= 0x10;
            if (i != 8)
                hear(EVENT_PGN_SEND_CAN, wrong);
        }
    EXPECT_THAT(ProcessDouble::takeLaunches(), IsEmpty());
    EXPECT_FALSE(manager.isTimerRunning(NavicoManager::quitTimer));

    const std::pair<Bytes, const char*> triggers[] = { { singleFrame, "-auto -a 35 -t 0 -s 7 -jl" },
                                                       { fastPacket, "-auto -a 36 -t 2 -s 0 -jl" },
                                                       { { 30, 0 }, "-auto" } };
    for (const auto& [trigger, arguments] : triggers)
    {
        hear(trigger.size() > 2 ? EVENT_PGN_SEND_CAN : EVENT_DATA_SEND_CAN, trigger);
        const auto launches = ProcessDouble::takeLaunches();
        ASSERT_EQ(launches.size(), 1u);
        EXPECT_EQ(launches[0].arguments.joinIntoString(" "), arguments);
        EXPECT_EQ(launches[0].kind, ProgramKind::update) << "so that its signature is asked for";
        EXPECT_TRUE(manager.isTimerRunning(NavicoManager::quitTimer));
        hear(EVENT_PGN_SEND_CAN, fastPacket);
        EXPECT_THAT(ProcessDouble::takeLaunches(), IsEmpty()) << "it is on its way";
        manager.stopTimer(NavicoManager::quitTimer);
    }
}

// Whatever comes, there is at most one acknowledgement, and answers go before all that waits.
TEST_F(NavicoManagerTest, StandsDamageAndFloods)
{
    const Bytes whole { 0x00, 0xED, 0x01, 0x00, 0x23, 0x02, 0x01, 0x16, 0xFE, 0x01, 0xF8, 3, 1, 2, 2, 40, 4, 1 };
    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        audio.calls.clear();
        hear(EVENT_PGN_SEND_CAN, { whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length) });
        EXPECT_EQ(mcuHears().size(), length >= 10 ? 1u : 0u) << length;
        EXPECT_THAT(audio.calls, IsEmpty()) << length;
    }

    // Nobody acknowledges: of the answers to a flood of requests for both volumes the newest two wait.
    for (int i = 0; i < 1000; ++i)
        hear(EVENT_PGN_SEND_CAN, { 0x00, 0xEA, 0x00, 0x00, 0x23, 0x02, 0x16, 0xFE, 0x01 });
    EXPECT_EQ(HostSessionManager::getInstance()->getRefusedSends(), 0);
    hear(EVENT_PGN_SEND_CAN, whole);
    const auto inFlight = mcu.takeWritten();
    ASSERT_EQ(inFlight.size(), 1u);
    mcu.send(McuLink::acknowledgementOf(inFlight.front().sequence));
    EXPECT_THAT(mcuHears(), ElementsAre(testing::StartsWith("11 00 ED 01"), "11 16 FE 01 00 FF 02 02 18 F3",
                                        "11 16 FE 01 00 FF 02 01 28 F3"));
}
