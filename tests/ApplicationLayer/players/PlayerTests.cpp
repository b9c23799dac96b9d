#include "ApplicationLayer/players/SiriusApplication.h"
#include "ApplicationLayer/players/USBApplication.h"
#include "ApplicationLayer/players/iPodApplication.h"
#include "EngineApi/KeyCodes.h"
#include "EngineLayer/devices/DeviceStatusManager.h"
#include "EngineLayer/settings/DataManager.h"
#include "EngineLayer/system/SystemInfo.h"
#include "doubles/LinesDouble.h"
#include "platform/devices/UnitLines.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SysInfoItems.h"
#include "support/ApplicationFixture.h"

using namespace Platform;
using namespace ApplicationLayer;
using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using Platform::doubles::LinesDouble;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

/** The iPod and USB applications, which stand in for each other, with their programs. */
class PlayerTest : public ApplicationFixture
{
protected:
    PlayerTest()
        : ApplicationFixture("9 = 1\n1793 = 1\n", { mbFM, mbAVOff, mbBTAudio })
    {
        LinesDouble::reset();
        add(DataManager::getInstance(), Kernel::dataManagerId);
        add(DeviceStatusManager::getInstance(), Kernel::deviceStatusManagerId);
        add(&iPod, Kernel::iPodApplicationId);
        add(&usb, Kernel::usbApplicationId);
        connect(AppiPod);
        connect(AppUSB);
        for (const int item : { sysInfoiPodDriver, sysInfoiPodAuthentication, sysInfoiPodLink, sysInfoSppLink })
            setItem(item, 0);
        audio.calls.clear();
        takeSent();
        takePosted();
    }

    void device(int kind, bool present)
    {
        setDeviceState(kind, present);
        run();
    }
    void iPodSays(int what, int arg1, int arg2) { fromProgram(AppiPod, what, arg1, arg2); }
    static void setItem(int item, int value) { SystemInfo::getInstance()->set(item, value); }
    static int item(int which) { return SystemInfo::getInstance()->get(which); }

    /** The page has become the source, and everybody was told. */
    void switchTo(int page)
    {
        playing(page);
        send(Kernel::deviceStatusManagerId, Kernel::MSG_NORMAL_SOURCE, page);
    }
    Texts takeCalls() { return std::exchange(audio.calls, {}); }
    static std::string source(int channel) { return "source " + std::to_string(channel); }

    iPodApplication& iPod = *new iPodApplication;
    USBApplication& usb = *new USBApplication;
};

} // namespace

TEST_F(PlayerTest, TheSoundOfTheiPodComesTheWayThatItsProgramSays)
{
    EXPECT_EQ(getAudioChannel(mbiPodAudio), Dsp::eAudioWince);
    playing(mbiPodAudio);
    iPodSays(RMSG_IPOD_AUDIO_PATH, 1, 2);
    EXPECT_EQ(getAudioChannel(mbiPodAudio), Dsp::eAudioAux2);
    EXPECT_EQ(getAudioChannel(mbiPodVideo), Dsp::eAudioAux2);
    EXPECT_THAT(requests(), ElementsAre("mbiPodAudio play auto"));
    iPodSays(RMSG_IPOD_AUDIO_PATH, 1, 2);
    EXPECT_THAT(requests(), IsEmpty()) << "nothing new";
    iPodSays(RMSG_IPOD_AUDIO_PATH, 1, 1);
    EXPECT_EQ(getAudioChannel(mbiPodAudio), Dsp::eAudioWince);
    EXPECT_THAT(requests(), ElementsAre("mbiPodAudio play auto"));
    iPodSays(RMSG_IPOD_AUDIO_PATH, 2, 2);
    EXPECT_THAT(requests(), IsEmpty());

    // Left and entered again it is reported anew.
    carryOut(mbiPodAudio, SwitchType::ToStop, {}, AppCommandLine::genCmdSourceExit(mbiPodAudio, mbFM));
    takePosted();
    iPodSays(RMSG_IPOD_AUDIO_PATH, 1, 1);
    EXPECT_THAT(requests(), ElementsAre("mbiPodAudio play auto"));
}

/**
    The iPod plays over its analog path, is pulled out, and comes back over the digital one; the radio of the same phone
    plays in between. The DSP listens where the sound comes in, and is told once.
*/
TEST_F(PlayerTest, TheDspFollowsTheSoundOfTheiPodPluggedInAgain)
{
    const auto path = [this](int which) { iPodSays(RMSG_IPOD_AUDIO_PATH, 1, which); };
    const auto unplug = [this] { iPodSays(RMSG_IPOD_DEVICE, 2, 1); };
    constexpr int digital = 1, analog = 2;
    switchTo(mbiPodAudio);
    path(analog);
    EXPECT_THAT(takeCalls(), ElementsAre(source(Dsp::eAudioWince), source(Dsp::eAudioAux2)));
    unplug();
    path(digital);
    EXPECT_THAT(takeCalls(), ElementsAre(source(Dsp::eAudioWince)));
    unplug();
    path(analog);
    path(analog);
    EXPECT_THAT(takeCalls(), ElementsAre(source(Dsp::eAudioAux2)));

    switchTo(mbiPodPandora);
    unplug();
    path(analog);
    EXPECT_THAT(takeCalls(), ElementsAre(source(Dsp::eAudioPandora))) << "it is not the iPod's page that plays";
    switchTo(mbiPodVideo);
    EXPECT_THAT(takeCalls(), ElementsAre(source(Dsp::eAudioAux2)));
    path(digital);
    EXPECT_THAT(takeCalls(), ElementsAre(source(Dsp::eAudioWince)));
}

TEST_F(PlayerTest, TheiPodComesAuthenticatesAndGoes)
{
    setItem(sysInfoiPodLink, 2);
    iPodSays(RMSG_IPOD_DEVICE, 0, 1);
    EXPECT_EQ(item(sysInfoiPodLink), 3);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppiPod, RMSG_IPOD_CONTROL, 2 }));
    setItem(sysInfoiPodDriver, 1);
    iPodSays(RMSG_IPOD_DEVICE, 0, 1);
    EXPECT_THAT(takeSent(), IsEmpty());

    setItem(sysInfoiPodAuthentication, 1);
    iPodSays(RMSG_IPOD_DEVICE, 1, 1);
    EXPECT_TRUE(getDeviceState(pandoraOniPod));
    playing(mbBTAudio);
    setItem(sysInfoiPodAuthentication, 2);
    iPodSays(RMSG_IPOD_DEVICE, 1, 1);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppiPod, RMSG_IPOD_CONTROL, 3 }));

    iPodSays(WM_MESSAGE_IPOD_DRIVER, 234567, 1);
    EXPECT_TRUE(getDeviceState(EngineApi::iPodConnected));
    setItem(sysInfoiPodLink, 2);
    setItem(sysInfoSppLink, 2);
    iPodSays(RMSG_IPOD_DEVICE, 2, 0);
    EXPECT_FALSE(getDeviceState(EngineApi::iPodConnected));
    EXPECT_FALSE(getDeviceState(pandoraOniPod));
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppiPod, RMSG_IPOD_CONTROL, 2 }));
    iPodSays(WM_MESSAGE_IPOD_DRIVER, 1, 1);
    iPodSays(WM_MESSAGE_IPOD_DRIVER, 234567, 5);
    EXPECT_FALSE(getDeviceState(EngineApi::iPodConnected));
}

TEST_F(PlayerTest, TheTestEquipmentPlaysFromUsb)
{
    constexpr auto id = Kernel::usbApplicationId;
    EXPECT_THAT(autoTest(id, { 4, 5, 2 }), IsEmpty());
    setEnterTestMode(true);
    EXPECT_THAT(autoTest(id, { 4, 5, 2 }), ElementsAre("04 05 01"));
    EXPECT_THAT(autoTest(id, { 4, 10, 7 }), ElementsAre("04 0A 07"));
    EXPECT_THAT(autoTest(id, { 4, 11 }), ElementsAre("04 0B 01"));
    EXPECT_THAT(autoTest(id, { 4, 99 }), ElementsAre("04 63"));
    EXPECT_THAT(takeSent(),
                ElementsAre(Sent { AppUSB, RMSG_USB_CONTROL, 3, 2 }, Sent { AppUSB, RMSG_USB_CONTROL, 4, 7 },
                            Sent { AppUSB, RMSG_USB_CONTROL, 5, 0 }));
}

TEST_F(PlayerTest, TheSatelliteTunerPlaysAndShowsFavourites)
{
    add(new SiriusApplication, Kernel::siriusApplicationId);
    takePosted();
    const auto enter = [] { return AppCommandLine::genCmdSourceEnter(mbSirius, false, true); };
    connect(AppSirius);
    order(mbSirius, SwitchType::ToRun, { 1, 1, 1, 1 }, enter());
    key(mbSirius, KEY_ROTARY_ENTER, 4);
    key(mbSirius, KEY_NEXT, 5);
    EXPECT_THAT(requests(), IsEmpty()) << "it is in front already";
    EXPECT_THAT(takeSent(), IsEmpty());
    auto commandLine = enter();
    order(mbSirius, SwitchType::ToChange, { 1, 1, 1, 1 }, commandLine);
    ASSERT_NE(commandLine->getExtraData(), nullptr);
    EXPECT_EQ(commandLine->getExtraData()->getInt("Favourite", 0), 4);

    favouriteBar.shown = true;
    favouriteBar.index = 6;
    fromProgram(AppSirius, RMSG_SXM_EVENT, 3, 12);
    fromProgram(AppSirius, RMSG_SXM_EVENT, 4);
    EXPECT_EQ(favouriteBar.count, 12);
    EXPECT_EQ(favouriteBar.refreshes, 1);
    EXPECT_THAT(favouriteBar.messages,
                ElementsAre(std::array { static_cast<int>(Kernel::MSG_FAVOURITES_SELECT), 6, 0 }));
}
