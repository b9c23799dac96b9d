#include "EngineApi/RemoteMessageIds.h"
#include "bench/Names.h"
#include "bench/Settings.h"
#include "bench/program/Describe.h"
#include "bench/program/Profile.h"
#include "platform/Pubhead.h"
#include "support/ScratchUnit.h"

#include <gmock/gmock.h>
#include <set>

namespace
{

using namespace BenchProgram;
using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;
using testing::ElementsAre;
using testing::IsEmpty;

std::string sent(int what, int arg1, int arg2 = 0)
{
    return std::to_string(what) + " " + std::to_string(arg1) + " " + std::to_string(arg2);
}

/** The bundle, as a command line brings it. */
Bundle::Ptr bundleOf(const juce::String& json)
{
    const auto line = R"({"commandLine":{"type":"pageShow","page":0,"extra":)" + json + "}}";
    return RemoteObjFormat::generateCommandLine(CmdLineHelper::parseCommandLine(line))->getExtraData();
}

/** Writes down what the profile does, and stores settings at once, as the engine does in a while. */
class ProfileTest : public testing::Test, public Host
{
public:
    void send(int what, int arg1, int arg2, Bundle::Ptr) override { log.push_back(sent(what, arg1, arg2)); }
    void changeSetting(int index, int value) override { VX_SetSetupValueInt(index, value); }
    void changeSetting(int index, const juce::String& value) override { VX_SetSetupValueString(index, value); }
    void postToWindow(int message, int wParam, int) override { log.push_back("window " + sent(message, wParam)); }
    void report(const char*, const juce::String& detail) override { log.push_back(detail.toStdString()); }
    void changed() override {}
    int getSource() const override { return NUM_OF_PAGES; }

protected:
    ScratchUnit unit;
    std::vector<std::string> log;
    std::unique_ptr<Profile> profile;

    ProfileTest()
    {
        const juce::File factory(HEADUNIT_SOURCE_DIR "/resources/factory-settings.toml");
        ScratchUnit::emptySettings(factory.loadFileAsString());
    }

    void make(int appType) { profile = makeProfile(appType, *this); }
    std::string order(const juce::String& words)
    {
        return profile->onOrder(juce::StringArray::fromTokens(words, " ", ""));
    }
    std::vector<std::string> done() { return std::exchange(log, {}); }

    void tell(int what, int arg1, int arg2 = 0, const Bundle::Ptr& bundle = nullptr)
    {
        const auto message = RemoteMessage::obtain();
        message->what = what;
        message->arg1 = arg1;
        message->arg2 = arg2;
        message->bundle = bundle;
        profile->onMessage(*message);
    }

    void enter(int page, const Bundle::Ptr& extra = nullptr)
    {
        const auto line = AppCommandLine::genCmdSourceEnter(page, false, true);
        line->putExtraData(extra);
        profile->onCommandLine(*line);
        log.clear();
    }

    std::string texts(int page) const
    {
        const auto content = profile->content(page);
        return (content.title + "/" + content.status + "/" + content.detail).toStdString();
    }

    void hear(const juce::String& bodies) { tell(RMSG_RADIO_NOTIFY, 0, 0, bundleOf("{\"bodies\":" + bodies + "}")); }
    void tune(int band, int frequency)
    {
        tell(RMSG_RADIO_NOTIFY, 0, 0,
             RemoteObjFormat::formatMessageBodyList({ { 0, 2, band, {} }, { 0, 0, frequency, {} } }));
    }
};

} // namespace

TEST_F(ProfileTest, radioShowsTheStationThatItIsOn)
{
    make(AppRadio);
    enter(mbFM);
    tune(1, 1000);
    tune(0, 10110);
    hear(R"([{"key":5,"value":6,"bytes":[80,73,69,82,32,32]},{"key":6,"value":2,"bytes":[72,105]}])");
    for (const auto* damaged :
         { "9470", R"([{"value":9470}])", R"([{"key":0}])", R"([{"key":0,"value":"9470"}])",
           R"([{"key":"0","value":9470}])", R"([{"key":5,"value":8}])", R"([{"key":6,"value":9,"bytes":[72]}])",
           R"([{"key":2,"value":3},{"key":0,"value":9470}])", R"([{"key":2,"value":-1},{"key":0,"value":9470}])" })
    {
        hear(damaged);
        EXPECT_EQ(texts(mbFM), "101.1 MHz/PIER/Hi") << damaged;
    }
    tune(0, 10110);
    EXPECT_EQ(texts(mbFM), "101.1 MHz/PIER/Hi") << "the same station again";
    enter(mbAM);
    tune(1, 1000);
    EXPECT_EQ(texts(mbAM), "1000 kHz/Ready/") << "the FM station is not on AM";
    hear(R"([{"key":5,"value":1,"bytes":[65]}])");
    tune(1, 1010);
    EXPECT_EQ(texts(mbAM), "1010 kHz/Ready/");
}

TEST_F(ProfileTest, radioFindsItsFavouritesAgain)
{
    constexpr int favourite = 2;
    make(AppRadio);
    profile->playFavourite(favourite);
    EXPECT_THAT(done(), IsEmpty()) << "nothing is stored";
    for (const auto& [page, band, frequency, label] :
         { std::tuple(mbFM, 0, 10110, "101.1"), std::tuple(mbFM, 0, 8755, "87.55"), std::tuple(mbFM, 0, 10000, "100.0"),
           std::tuple(mbAM, 1, 1000, "1000"), std::tuple(mbWB, 2, 3, "3") })
    {
        enter(page);
        tune(band, frequency);
        EXPECT_EQ(profile->favouriteLabel(), label);
        VX_SetSetupValueString(39 + favourite, profile->favouriteLabel());
        profile->playFavourite(favourite);
        EXPECT_THAT(done(), ElementsAre(sent(RMSG_RADIO_CONTROL, 16, frequency)));
    }
}

// Sources of both zones change by the same notice; a state says everything at once.
TEST_F(ProfileTest, mainMenuOffersEveryOtherPageAndLightsWhatPlays)
{
    using Pages = std::set<int>;
    make(AppMainMenu);
    const auto pagesThat = [this](bool Tile::*are)
    {
        Pages pages;
        for (int half = 0; half < 2; ++half)
        {
            const auto tiles = profile->content(mbMainMenu).tiles;
            for (const auto& tile : tiles)
            {
                profile->onTouch(mbMainMenu, tile.id); // the last one turns over
                if (tile.page != NUM_OF_PAGES && tile.*are)
                    pages.insert(tile.page);
            }
        }
        return pages;
    };
    const auto state = bundleOf(R"({"state":[52,53,28,24,55],"normalSrc":52,"rearSrc":28})");
    enter(mbMainMenu, state);
    EXPECT_EQ(pagesThat(&Tile::offered), (Pages { mbFM, mbAM, mbReariPod, mbRearAV1 }));
    std::set<std::string> chosen;
    for (const auto& info : Bench::allPages())
        chosen.insert(info.page == mbEQ ? sent(RMSG_EQ_PAGE_SHOW, 0) : sent(RMSG_APP_EVENT, 5, info.page));
    chosen.erase(sent(RMSG_APP_EVENT, 5, mbMainMenu));
    EXPECT_THAT(done(), testing::UnorderedElementsAreArray(chosen));
    EXPECT_EQ(pagesThat(&Tile::lit), (Pages { mbFM, mbReariPod }));
    tell(RMSG_MAINMENU_NOTIFY, 1, mbAM);
    tell(RMSG_MAINMENU_NOTIFY, 1, mbRearAV1);
    EXPECT_EQ(pagesThat(&Tile::lit), (Pages { mbAM, mbRearAV1 }));
    tell(RMSG_MAINMENU_NOTIFY, 1, mbRearOff);
    EXPECT_EQ(pagesThat(&Tile::lit), (Pages { mbAM }));
    tell(RMSG_MAINMENU_NOTIFY, 2, 0, state);
    EXPECT_EQ(pagesThat(&Tile::lit), (Pages { mbFM, mbReariPod }));
}

TEST_F(ProfileTest, bluetoothFollowsThePhone)
{
    constexpr int bluetoothSetting = 7, deviceName = 1039, linkWanted = 0x10001;
    make(AppBluetooth);
    tell(RMSG_BT_LINK, 1, linkWanted);
    EXPECT_NE(order("call Marina"), "");
    EXPECT_THAT(done(), IsEmpty()) << "without a phone";
    EXPECT_EQ(order("connect Skipper of Pier 9"), "");
    EXPECT_EQ(VX_GetSetupValueString(deviceName), "Skipper of Pier 9");
    tell(RMSG_BT_LINK, 1, linkWanted);
    EXPECT_EQ(order("call Marina"), "");
    EXPECT_EQ(texts(mbBTPhone), "Marina/Incoming call, Skipper of Pier 9/");
    for (const auto* words : { "hang-up", "disconnect", "disconnect" })
        EXPECT_EQ(order(words), "");
    EXPECT_THAT(done(), ElementsAre(sent(RMSG_BT_STATE, 1, 2), sent(RMSG_BT_STATE, 8, 0), sent(RMSG_BT_STATE, 2, 8),
                                    "window " + sent(RMSG_MENU_COMMAND_WINDOW, 11), sent(RMSG_BT_STATE, 1, 1)));

    profile->onTouch(mbBTPhone, profile->content(mbBTPhone).rows.back().id);
    EXPECT_EQ(texts(mbBTPhone), "Phone/Galley tablet/");
    tell(RMSG_BT_CONTROL, 2);
    EXPECT_THAT(done(), ElementsAre(sent(RMSG_BT_STATE, 1, 2), sent(RMSG_BT_STATE, 1, 1))) << "switched off";
    VX_SetSetupValueInt(bluetoothSetting, 0);
    EXPECT_NE(order("connect"), "");
    EXPECT_THAT(done(), ElementsAre("off"));
}

TEST_F(ProfileTest, iPodIsAuthenticatedWhereItIs)
{
    constexpr int authenticated = 21, authenticate = 2, leaveBluetooth = 8;
    make(AppiPod);
    EXPECT_EQ(order("connect analog"), "");
    tell(RMSG_IPOD_CONTROL, authenticate);
    tell(RMSG_IPOD_CONTROL, leaveBluetooth);
    EXPECT_EQ(VX_GetSysInfo(authenticated), 1) << "on the cable";
    EXPECT_THAT(done(), ElementsAre(sent(WM_MESSAGE_IPOD_DRIVER, 234567, 1), sent(RMSG_IPOD_DEVICE, 0, 1),
                                    sent(RMSG_IPOD_AUDIO_PATH, 1, 2)));
    EXPECT_EQ(order("disconnect"), "");
    EXPECT_EQ(VX_GetSysInfo(authenticated), 0);
    tell(RMSG_IPOD_CONTROL, authenticate);
    EXPECT_EQ(VX_GetSysInfo(authenticated), 2) << "over Bluetooth";
    EXPECT_THAT(done(), ElementsAre(sent(RMSG_IPOD_DEVICE, 2), sent(RMSG_IPOD_DEVICE, 1, 1)));
    tell(RMSG_IPOD_CONTROL, leaveBluetooth);
    EXPECT_EQ(VX_GetSysInfo(authenticated), 0);
}

// Every value of every row comes once before the first one comes again, and each looks different.
TEST_F(ProfileTest, setupStepsThroughAllValues)
{
    constexpr int auxName = 19;
    std::set<int> settings;
    make(AppSetup);
    VX_SetSetupValueString(auxName, "Flute");
    for (const auto& tab : profile->content(mbSetup).buttons)
    {
        profile->onTouch(mbSetup, tab.id);
        const auto rows = profile->content(mbSetup).rows;
        for (std::size_t i = 0; i < rows.size(); ++i)
        {
            const auto& info = *Bench::settingInfo(rows[i].id);
            std::vector<juce::String> values;
            for (int step = info.lowest; step <= info.highest + 1; ++step)
            {
                profile->onTouch(mbSetup, info.index);
                values.push_back(profile->content(mbSetup).rows[i].value);
            }
            EXPECT_EQ(values.front(), values.back()) << info.name;
            EXPECT_EQ(std::set(values.begin(), values.end()).size(), values.size() - 1) << info.name;
            EXPECT_EQ(VX_IsSetupValueString(info.index), info.isText) << info.name;
            settings.insert(info.index);
        }
    }
    EXPECT_EQ(settings.size(), 18u);
}

TEST_F(ProfileTest, equaliserLevelsStopAtTheirEnds)
{
    std::vector<std::size_t> counts;
    make(AppEQ);
    for (const auto& preset : profile->content(mbEQ).buttons)
    {
        profile->onTouch(mbEQ, preset.id);
        const auto levels = profile->content(mbEQ).levels;
        counts.push_back(levels.size());
        for (std::size_t i = 0; i < levels.size(); ++i)
            for (const bool up : { true, false })
            {
                const auto& level = levels[i];
                for (int touch = level.lowest; touch <= level.highest; ++touch)
                    profile->onTouch(mbEQ, up ? level.up : level.down);
                EXPECT_EQ(profile->content(mbEQ).levels[i].position, up ? level.highest : level.lowest) << level.label;
            }
    }
    EXPECT_THAT(counts, ElementsAre(4, 0, 0, 0, 7));
    EXPECT_EQ(profile->content(mbEQ).levels.front().value, "-6 dB");
}

TEST_F(ProfileTest, antitheftLocksAfterThreeWrongCodes)
{
    const auto touch = [this](std::initializer_list<int> keys)
    {
        for (const int key : keys)
            profile->onTouch(mbAntitheft, key);
    };
    make(AppAntitheft);
    for (const auto* code : { "4321", "0" })
        EXPECT_EQ(order(code), "");
    touch({ 1, 2, 3, 4, 5, 6, 7, 8, 9 });
    EXPECT_EQ(profile->content(mbAntitheft).status.length(), 8);
    touch({ keypadEnter });
    EXPECT_THAT(done(), ElementsAre("wrong", "wrong", "wrong", sent(RMSG_ANTITHEFT_EVENT, 1)));
    touch({ 1, 2, 3, 5, keypadBack, 4, keypadEnter });
    EXPECT_THAT(done(), ElementsAre("right", sent(RMSG_ANTITHEFT_EVENT, 2), sent(RMSG_SOURCE_STOP, 0)));
}

TEST_F(ProfileTest, refusesWhatItDoesNotUnderstand)
{
    std::map<int, juce::String> nearMisses {
        { AppRadio, "seek|seek sideways|step up twice|tune 0|tune 101x|region x|sensitivity -1|reception maybe" },
        { AppSirius, "channel 17|channel 24|channel 20th|favourites x|in and out" },
        { AppBluetooth, "link ajar|pandora|signal|signal 1 2|battery full|audio now" },
        { AppiPod, "connect optical|connect analog twice|path analog|pandora on off" },
        { AppAntitheft, "123456789|12a4" },
        { AppUSB, "play|play 1" },
        { AppMainMenu, "fm am|state of things" }
    };
    for (const auto appType : Bench::allApps())
    {
        make(appType);
        for (const auto& words : juce::StringArray::fromTokens("| |nonsense|1 2 3|" + nearMisses[appType], "|", ""))
        {
            EXPECT_NE(order(words), "") << appTypeName(appType) << ": " << words;
            EXPECT_THAT(done(), IsEmpty()) << appTypeName(appType) << ": " << words;
        }
    }
}

TEST(Describe, saysTheSameInEveryRun)
{
    const auto bundle = bundleOf(R"({"text":"Pier 9","name":[72,105,0,0],"gap":[65,0,66],"bytes":[1,255],"none":[],)"
                                 R"("list":[{"key":-1},{"key":2}],"inner":{"on":true}})");
    const juce::String words = "{bytes=<01 ff> gap=<41 00 42> inner={on=true} list=[{key=-1} {key=2}] name=\"Hi\" "
                               "none=<> text=\"Pier 9\"}";
    EXPECT_EQ(describe(bundle), words);
    EXPECT_EQ(describe(Bundle::Ptr()) + describe(Bundle::obtain()), "");
    const auto enter = AppCommandLine::genCmdSourceEnter(mbFM, false, true);
    enter->putExtraData(bundle);
    EXPECT_EQ(describe(*enter), "sourceEnter mbFM onTop " + words);
    EXPECT_EQ(describe(*AppCommandLine::genCmdPageShow(mbEQ, true)), "pageShow mbEQ");
    EXPECT_EQ(describe(*AppCommandLine::genCmdPageHide(mbFM, mbEQ)), "pageHide mbFM for mbEQ");
    EXPECT_EQ(describe(*AppCommandLine::genCmdSourceExit(mbFM, mbAM)), "sourceExit mbFM for mbAM");
}
