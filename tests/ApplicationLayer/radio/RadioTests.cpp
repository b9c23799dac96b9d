#include "ApplicationLayer/radio/RadioApplication.h"

#include "EngineApi/HostLink.h"
#include "EngineApi/KeyCodes.h"
#include "EngineLayer/hostlink/HostSessionManager.h"
#include "doubles/SystemDouble.h"
#include "lowlayer/HostcommDev.h"
#include "platform/settings/SetupIndex.h"
#include "support/ApplicationFixture.h"
#include "support/ErrorLog.h"
#include "support/McuLink.h"

using namespace ApplicationLayer;
using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using Platform::AppCommandLine;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

using Bytes = McuLink::Bytes;

/** The radio between its program, the microcontroller with the tuner, and the test equipment. */
class RadioTest : public ApplicationFixture
{
protected:
    RadioTest()
        : ApplicationFixture("21 = 7\n23 = 0\n24 = 52\n25 = 53\n")
    {
        Platform::doubles::SystemDouble::reset();
        add(LowLayer::HostcommDev::getInstance(), Kernel::hostcommDevId);
        add(HostSessionManager::getInstance(), Kernel::hostSessionManagerId);
        add(&radio, Kernel::radioApplicationId);
        fromMcu(EVENT_GET_LAST_MEMORY, {});
        mcuHears();
        takePosted();
    }

    /** The scheduler brings the page to the front. */
    AppCommandLine::Ptr inFront(int page)
    {
        playing(page);
        auto commandLine = AppCommandLine::genCmdSourceEnter(page, false, true);
        order(page, SwitchType::ToRun, { 1, 1, 1, 1 }, commandLine);
        ApplicationManager::getInstance()->refreshSnapshot();
        return commandLine;
    }

    void fromMcu(int command, const Bytes& data)
    {
        mcu.send({ sequence++ & 0xff, command, data });
        run();
    }
    void reportFrequency(std::uint8_t band, int frequency, std::uint8_t area)
    {
        fromMcu(EVENT_RADIO_INFO_REPORT,
                { 1, band, static_cast<std::uint8_t>(frequency >> 8), static_cast<std::uint8_t>(frequency), area });
    }
    Texts mcuHears()
    {
        return mcu.hear([this] { run(); });
    }

    /** Each batch that the program got, as "33=0 2=1 5=<8: 41 42>", with its bodies' kinds checked. */
    static Texts batches()
    {
        Texts seen;
        for (const auto& sent : Platform::IpcDouble::takePosted(AppRadio))
        {
            EXPECT_EQ(sent.what, RMSG_RADIO_NOTIFY);
            const auto bodies = sent.bundle->getBundleList("bodies");
            EXPECT_EQ(static_cast<int>(bodies.size()), sent.arg2);
            juce::StringArray batch;
            for (const auto& body : bodies)
            {
                const auto bytes = body->getByteArray("bytes");
                const juce::String value(body->getInt("value", -1));
                EXPECT_EQ(body->getInt("kind", 0), bytes.isEmpty() ? 1328 : 74);
                batch.add(
                    juce::String(body->getInt("key", -1)) + "=" +
                    (bytes.isEmpty() ? value : "<" + value + ": " + Platform::hexPairs(bytes.getData(), 2) + ">"));
            }
            seen.push_back(batch.joinIntoString(" ").toStdString());
        }
        return seen;
    }

    McuLink mcu;
    int sequence = 1;
    RadioApplication& radio = *new RadioApplication;
};

} // namespace

TEST_F(RadioTest, OrdersOfTheProgramBecomeFrames)
{
    const auto frames = [this](int what, int which, int value)
    {
        fromProgram(AppRadio, what, which, value);
        return mcuHears();
    };
    connect(AppRadio);
    EXPECT_THAT(frames(RMSG_RADIO_CONTROL, 255, 0), IsEmpty()) << "no page was ordered";
    inFront(mbAM);
    struct Case
    {
        int what, which, value;
        Texts frames;
    };
    for (const auto& each : std::initializer_list<Case> {
             { RMSG_RADIO_CONTROL, 2, 9, { "15 08 09" } },
             { RMSG_RADIO_CONTROL, 16, 1010, { "15 05 01 03 F2" } },
             { RMSG_RADIO_CONTROL, 16, 65536, {} }, // would arrive as another frequency
             { RMSG_RADIO_CONTROL, 21, 0, { "24 02" } },
             { RMSG_RADIO_CONTROL, 22, 7, { "24 01 01 07" } },
             { RMSG_RADIO_CONTROL, 23, 0, { "24 03" } },
             { RMSG_RADIO_CONTROL, 99, 0, {} },
             { RMSG_RADIO_EVENT, 10, 1, { "24 00" } },
             { RMSG_RADIO_EVENT, 10, 1, {} }, // it is open
             { RMSG_RADIO_EVENT, 10, 0, {} },
             { RMSG_RADIO_CONTROL, 255, 0, {} }, // the frequency is unknown
         })
        EXPECT_EQ(frames(each.what, each.which, each.value), each.frames) << each.what << " " << each.which;

    reportFrequency(bandAM, 1010, 1);
    reportFrequency(bandFM, 8750, 1);
    EXPECT_THAT(frames(RMSG_RADIO_CONTROL, 255, 0), ElementsAre("15 05 01 03 F2"));
    inFront(mbFM);
    EXPECT_THAT(frames(RMSG_RADIO_CONTROL, 255, 0), ElementsAre("15 05 00 22 2E"));
    send(Kernel::radioApplicationId, Kernel::MSG_RADIO_REGION, 2);
    EXPECT_THAT(mcuHears(), ElementsAre("15 07 02"));
    EXPECT_THAT(frames(RMSG_RADIO_CONTROL, 255, 0), IsEmpty()) << "of the old region";
    inFront(mbWB);
    EXPECT_THAT(frames(RMSG_RADIO_CONTROL, 255, 0), ElementsAre("15 05 02 00 00"));
}

TEST_F(RadioTest, ReportsReachTheProgramInBatches)
{
    ErrorLog errors;
    connect(AppRadio);
    inFront(mbAM);
    Bytes name { 3 };
    name.resize(9, 0xC0); // no character set that the unit knows
    Bytes text { 4 };
    text.resize(65, 0x41);
    struct Case
    {
        int command;
        Bytes data;
        const char* batch;
        int complaints = 0; ///< one for each kind
    };
    const auto check = [&](std::initializer_list<Case> cases)
    {
        for (const auto& each : cases)
        {
            const auto before = ErrorLog::count("not understood");
            fromMcu(each.command, each.data);
            const auto expected = *each.batch != '\0' ? Texts { each.batch } : Texts {}; // nothing to say, no batch
            EXPECT_EQ(batches(), expected) << testing::PrintToString(each.data);
            EXPECT_EQ(ErrorLog::count("not understood") - before, each.complaints) << testing::PrintToString(each.data);
        }
    };
    check({
        { EVENT_RADIO_INFO_REPORT, { 1, bandAM, 3, 0xF2, 1 }, "33=1 2=1 0=1010" },
        { EVENT_RADIO_INFO_REPORT, { 1, bandWB, 0, 3, 0 }, "33=0 2=2 0=3" },
        { EVENT_RADIO_INFO_REPORT, { 1, noBand, 3, 0xF2, 1 }, "", 1 },
        { EVENT_RADIO_INFO_REPORT, { 1, bandAM, 3, 0xF2 }, "" },
        { EVENT_RADIO_INFO_REPORT, {}, "", 1 },
        { EVENT_RADIO_INFO_REPORT, { 9, 9 }, "", 1 },
        { EVENT_RADIO_INFO_REPORT, { 9, 8 }, "" },
        { EVENT_RADIO_INFO_REPORT, name, "5=<8: C0 C0>" },
        { EVENT_RADIO_INFO_REPORT, name, "" }, // the same again
        { EVENT_RADIO_INFO_REPORT, text, "6=<64: 41 41>" },
        { EVENT_RADIO_INFO_REPORT, Bytes(text.begin(), text.end() - 1), "", 1 },
        { EVENT_RADIO_CONTROL_RESP, { 1 }, "" },
        { EVENT_RADIO_INFO_REPORT, { 2, 1 }, "" }, // only for the sensitivity test
        { EVENT_RADIO_TESTMODE, { 5, 6, 7 }, "" },
    });
    fromProgram(AppRadio, RMSG_RADIO_EVENT, 10, 1);
    check({
        { EVENT_RADIO_INFO_REPORT, { 2, 1 }, "20=1" },
        { EVENT_RADIO_TESTMODE, { 5, 6, 7 }, "34=6" },
        { EVENT_RADIO_TESTMODE, { 5, 6 }, "", 1 },
    });
}

// Another source plays and the radio program is not there; it gets what is not outdated when it asks.
TEST_F(RadioTest, ValuesWaitForTheProgramUpToALimit)
{
    const auto reportName = [this](int number) {
        fromMcu(EVENT_RADIO_INFO_REPORT, { 3, 0, 0, 0, 0, 0, 0, 0, static_cast<std::uint8_t>(number) });
    };
    for (int name = 1; name <= 101; ++name)
        reportName(name);
    EXPECT_EQ(radio.getDiscardedBodies(), 1) << "the oldest";
    for (int report = 0; report < 17; ++report)
        reportFrequency(bandFM, 8750 + report, 0);
    reportName(102);
    EXPECT_EQ(radio.getDiscardedBodies(), 101) << "a value found all of them outdated, a text finds nothing so";
    reportFrequency(bandFM, 10000, 0);
    EXPECT_EQ(radio.getDiscardedBodies(), 153);
    EXPECT_THAT(batches(), IsEmpty());
    connect(AppRadio);
    fromProgram(AppRadio, RMSG_RADIO_CONTROL, 255);
    EXPECT_THAT(batches(), ElementsAre("33=0 2=0 0=10000"));
}

TEST_F(RadioTest, TheRegionIsStoredOnceTheUnitIsReady)
{
    constexpr int area = 21;
    send(Kernel::radioApplicationId, Kernel::MSG_SYS_READY);
    EXPECT_EQ(getSettingInt(area), 7) << "nothing is known yet";
    reportFrequency(bandFM, 8750, 1);
    EXPECT_EQ(getSettingInt(area), 1);
}

TEST_F(RadioTest, AWeatherAlertThatLastsBringsTheWeatherBand)
{
    constexpr int timer = RadioApplication::weatherAlertTimer;
    for (const bool switches : { false, true })
    {
        setSettingInt(Platform::weatherAlertSetting, switches ? 1 : 0, false, AppUnknown);
        fromMcu(EVENT_RADIO_INFO_REPORT, { 5, 1 });
        EXPECT_EQ(radio.getTimerInterval(timer), 4000);
        fire(radio, timer);
        EXPECT_EQ(requests(), switches ? Texts { "mbWB run auto" } : Texts {});
        EXPECT_FALSE(radio.isTimerRunning(timer));
        fromMcu(EVENT_RADIO_INFO_REPORT, { 5, 0 });
    }
}

TEST_F(RadioTest, FavouritesArePlayedByThePageThatHoldsThem)
{
    connect(AppRadio);
    inFront(mbFM);
    favouriteBar.stored = { 1, 2 };
    fromProgram(AppRadio, RMSG_RADIO_EVENT, 9, 1);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppRadio, RMSG_FAVOURITE, 1, 1 }));
    fromProgram(AppRadio, RMSG_RADIO_EVENT, 9, 2);
    EXPECT_THAT(requests(), ElementsAre("mbAM run auto"));
    EXPECT_THAT(takeSent(), IsEmpty());
    const std::array hide { static_cast<int>(Kernel::MSG_FAVOURITES_HIDE), 0, 0 };
    EXPECT_THAT(favouriteBar.messages, ElementsAre(hide, hide));
    fromProgram(AppRadio, RMSG_RADIO_EVENT, 9, 3);
    EXPECT_EQ(favouriteBar.messages.size(), 2u);
    EXPECT_THAT(requests(), IsEmpty());

    // The page that was asked for takes its favourite along, once.
    EXPECT_EQ(inFront(mbAM)->getExtraData()->getInt("Favourite", 0), 2);
    EXPECT_EQ(inFront(mbAM)->getExtraData(), nullptr);

    for (const bool shown : { false, true })
    {
        favouriteBar.shown = shown;
        fromProgram(AppRadio, RMSG_RADIO_EVENT, 8, shown ? 0 : 5);
        EXPECT_EQ(favouriteBar.count, 5);
        EXPECT_EQ(favouriteBar.refreshes, shown ? 1 : 0);
    }
}

TEST_F(RadioTest, AnswersTheTestEquipment)
{
    struct Case
    {
        Bytes request;
        Texts answers;
        Texts frames {};
        Texts requests {};
    };
    const auto check = [this](std::initializer_list<Case> cases)
    {
        for (const auto& each : cases)
        {
            SCOPED_TRACE(testing::PrintToString(each.request));
            EXPECT_EQ(autoTest(Kernel::radioApplicationId, each.request), each.answers);
            EXPECT_EQ(requests(), each.requests);
            EXPECT_EQ(mcuHears(), each.frames);
        }
    };
    // Nothing is known of the tuner: no answer has only two bytes.
    check({ { { 1, 20 }, {} }, { { 1, 21 }, {} }, { { 1 }, {} }, { {}, {} } });
    inFront(mbFM);
    reportFrequency(bandFM, 8750, 0);
    check({
        { { 1, 1, 0 }, { "01 01 00 00 00" } }, // it plays already
        { { 1, 1, 3 }, { "01 01 03 00 00" }, {}, { "mbAM run auto" } },
        { { 1, 1, 1 }, {} },
        { { 1, 1 }, {} },
        { { 1, 3 }, { "01 03 01 00 00" }, { "15 03" } },
        { { 1, 4 }, { "01 04 01 00 00" }, { "15 01" } },
        { { 1, 13 }, { "01 0D 01 00 00" }, { "15 05 00 22 2E" } },
        { { 1, 18, 3, 3, 0xF2 }, { "01 12 03 03 F2" }, { "15 05 01 03 F2" } },
        { { 1, 18, 0, 0x22, 0x2E }, { "01 12 00 22 2E" }, { "15 05 00 22 2E" } },
        { { 1, 18, 1, 3, 0xF2 }, {} },
        { { 1, 18, 3, 3 }, {} },
        { { 1, 20 }, { "01 14 00 22 2E" } },
        { { 1, 21 }, { "01 15 00 22 2E 2A 26 14 02 12 06 AE 0A" } },
        { { 1, 99 }, {} },
    });
    inFront(mbAM);
    reportFrequency(bandAM, 1010, 1);
    check({
        { { 1, 20 }, { "01 14 03 03 F2" } },
        { { 1, 21 }, { "01 15 02 22 2E 2A 30 05 02 0A 06 54 09" } },
    });
    inFront(mbWB);
    reportFrequency(bandWB, 3, 2);
    check({ { { 1, 20 }, {} }, { { 1, 21 }, {} } });
}
