#include "ApplicationLayer/bluetooth/BluetoothApplication.h"

#include "EngineLayer/settings/DataManager.h"
#include "EngineLayer/system/SystemInfo.h"
#include "doubles/LinesDouble.h"
#include "doubles/SystemDouble.h"
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

using Items = std::map<int, int>;

/** The Bluetooth application with its program; the module's reports are the program's. */
class BluetoothTest : public ApplicationFixture
{
protected:
    BluetoothTest()
        : ApplicationFixture("7 = 1\n1039 = \"Phone\"\n", { mbFM, mbAVOff, mbiPodPandora, mbUSBAudio })
    {
        LinesDouble::reset();
        doubles::SystemDouble::reset();
        add(DataManager::getInstance(), Kernel::dataManagerId);
        add(&bluetooth, Kernel::bluetoothApplicationId);
        for (const int program : { AppBluetooth, AppiPod, AppPandora, AppUSB })
            connect(program);
        takeSent();
        for (int item = 0; item <= sysInfoPandoraLink; ++item)
            setItem(item, 0);
        takePosted();
    }
    ~BluetoothTest() override
    {
        for (const int kind : { bluetoothConnected, pandoraOnBluetooth })
            setDeviceState(kind, false);
    }

    void report(int what, int value) { fromProgram(AppBluetooth, RMSG_BT_STATE, what, value); }
    static void setItem(int item, int value) { SystemInfo::getInstance()->set(item, value); }
    static Items items(std::initializer_list<int> which)
    {
        Items values;
        for (const int item : which)
            values[item] = SystemInfo::getInstance()->get(item);
        return values;
    }
    static Sent toProgram(int message, int arg1, int arg2 = 0) { return { AppBluetooth, message, arg1, arg2 }; }

    BluetoothApplication& bluetooth = *new BluetoothApplication;
};

} // namespace

TEST_F(BluetoothTest, FollowsItsSetting)
{
    send(Kernel::bluetoothApplicationId, Kernel::MSG_SYS_READY);
    EXPECT_THAT(takeSent(), ElementsAre(toProgram(RMSG_BT_CONTROL, 7)));
    EXPECT_EQ(items({ 0 }), (Items { { 0, 1 } }));

    setSettingInt(bluetoothSetting, 0, true, AppSetup);
    run();
    EXPECT_THAT(takeSent(), ElementsAre(toProgram(RMSG_BT_CONTROL, 2)));
    EXPECT_EQ(getSettingString(bluetoothNameSetting), "No Device");
    EXPECT_EQ(bluetooth.getTimerInterval(BluetoothApplication::offTimer), 1000);
    EXPECT_THAT(requests(), IsEmpty()) << "neither page has run";
    for (const auto id : { Kernel::MSG_BT_SWITCH_ON, Kernel::MSG_SYS_READY })
        send(Kernel::bluetoothApplicationId, id);
    EXPECT_THAT(takeSent(), IsEmpty());

    setSettingInt(bluetoothSetting, 1, true, AppSetup);
    run();
    EXPECT_FALSE(bluetooth.isTimerRunning(BluetoothApplication::offTimer));

    carryOut(mbBTAudio, SwitchType::ToRun, { 2, 1, 1, 2 });
    takePosted();
    send(Kernel::bluetoothApplicationId, Kernel::MSG_BT_SWITCH_OFF);
    EXPECT_THAT(requests(), ElementsAre("mbBTAudio stop auto"));
}

TEST_F(BluetoothTest, MirrorsTheModule)
{
    report(1, 2);
    EXPECT_TRUE(getDeviceState(bluetoothConnected));
    EXPECT_EQ(items({ 0 }), (Items { { 0, 2 } }));
    report(3, 41);
    report(4, 42);
    EXPECT_EQ(items({ 1, 2 }), (Items { { 1, 41 }, { 2, 42 } }));
    setItem(sysInfoPairedList, 1);
    report(7, 0);
    EXPECT_EQ(items({ 22 }), (Items { { 22, 2 } }));
    setItem(sysInfoSppLink, 2);
    setItem(sysInfoPandoraLink, 2);
    setDeviceState(pandoraOnBluetooth, true);
    takeSent();

    report(1, 1);
    EXPECT_EQ(items({ 0, 22, 31, 34, 35 }), (Items { { 0, 1 }, { 22, 0 }, { 31, 0 }, { 34, 0 }, { 35, 0 } }));
    EXPECT_FALSE(getDeviceState(bluetoothConnected));
    EXPECT_FALSE(getDeviceState(pandoraOnBluetooth));
    EXPECT_EQ(getSettingString(bluetoothNameSetting), "No Device");
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppiPod, WM_MESSAGE_IPOD_DRIVER, 234567, 7 },
                                        Sent { AppPandora, WM_MESSAGE_IPOD_DRIVER, 234567, 7 }));
}

TEST_F(BluetoothTest, TheDeviceListOpensOnce)
{
    send(Kernel::bluetoothApplicationId, Kernel::MSG_BT_DEVICE_LIST);
    EXPECT_THAT(requests(), ElementsAre("mbBTPhone run"));
    const auto shown = AppCommandLine::genCmdPageShow(mbBTPhone, false);
    carryOut(mbBTPhone, SwitchType::ToChange, { 1, 3, 2, 2 }, shown);
    ASSERT_TRUE(shown->hasExtraData());
    EXPECT_TRUE(shown->getExtraData()->getBool("gotodevicelist", false));
    const auto again = AppCommandLine::genCmdPageShow(mbBTPhone, false);
    carryOut(mbBTPhone, SwitchType::ToChange, { 1, 3, 2, 2 }, again);
    EXPECT_FALSE(again->hasExtraData());
}

TEST_F(BluetoothTest, ASerialLinkThatCannotAuthenticateCostsTheModuleItsSupply)
{
    report(8, 0); // FM plays, or nothing
    EXPECT_EQ(LinesDouble::getPin(output1Line), 0);
    EXPECT_EQ(bluetooth.getTimerInterval(BluetoothApplication::supplyTimer), 2000);
    fire(bluetooth, BluetoothApplication::supplyTimer);
    EXPECT_EQ(LinesDouble::getPin(output1Line), 1);
    EXPECT_EQ(LinesDouble::getPin(output2Line), 1);
    EXPECT_FALSE(bluetooth.isTimerRunning(BluetoothApplication::supplyTimer));

    playing(mbBTAudio);
    takeSent();
    report(8, 0);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppiPod, RMSG_IPOD_CONTROL, 2 }));
    EXPECT_EQ(items({ 34 }), (Items { { 34, 2 } }));
    report(8, 1);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppiPod, WM_MESSAGE_IPOD_DRIVER, 234567, 7 }));
}

TEST_F(BluetoothTest, ThePandoraLinkIsWatchedWhilePandoraPlays)
{
    playing(mbiPodPandora);
    takeSent();
    report(9, 0);
    EXPECT_TRUE(getDeviceState(pandoraOnBluetooth));
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppPandora, RMSG_PANDORA_NOTIFY, 0, 1 }));
    setItem(sysInfoPandoraSource, 2);
    report(9, 1);
    EXPECT_FALSE(getDeviceState(pandoraOnBluetooth));
    EXPECT_EQ(items({ 35 }), (Items { { 35, 0 } }));
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppPandora, WM_MESSAGE_IPOD_DRIVER, 234567, 7 }));
    EXPECT_EQ(bluetooth.getTimerInterval(BluetoothApplication::pandoraTimer), 10'000);
}

TEST_F(BluetoothTest, ASourceChangeOpensAndClosesTheSerialLink)
{
    const auto change = [this](int page)
    {
        send(Kernel::bluetoothApplicationId, Kernel::MSG_NORMAL_SOURCE, page, 3);
        return takeSent();
    };
    EXPECT_THAT(change(mbBTAudio), ElementsAre(toProgram(RMSG_BT_LINK, 10, 1))) << "no phone is connected";
    report(1, 2);
    takeSent();
    EXPECT_THAT(change(mbBTAudio),
                ElementsAre(toProgram(RMSG_BT_LINK, 10, 1), toProgram(RMSG_BT_LINK, 1, 3 << 16 | 1)));
    report(8, 0);
    takeSent();
    EXPECT_THAT(change(mbUSBAudio),
                ElementsAre(toProgram(RMSG_BT_LINK, 10, 0), toProgram(RMSG_BT_LINK, 1, 3 << 16 | 5)));

    setItem(sysInfoSppLink, 2);
    for (const auto& [authenticated, control] : std::map<int, int> { { 0, 2 }, { 2, 3 } })
    {
        setItem(sysInfoiPodAuthentication, authenticated);
        carryOut(mbBTAudio, SwitchType::ToRun, { 2, 1, 1, 2 },
                 AppCommandLine::genCmdSourceEnter(mbBTAudio, false, false));
        EXPECT_THAT(takeSent(), testing::Contains(Sent { AppiPod, RMSG_IPOD_CONTROL, control }));
    }
    carryOut(mbBTAudio, SwitchType::ToStop, {}, AppCommandLine::genCmdSourceExit(mbBTAudio, mbFM));
    EXPECT_THAT(takeSent(), testing::Contains(Sent { AppiPod, RMSG_IPOD_CONTROL, 8 }));
}

TEST_F(BluetoothTest, AnswersTheTestEquipmentInTestMode)
{
    constexpr auto id = Kernel::bluetoothApplicationId;
    EXPECT_THAT(autoTest(id, { 5, 3 }), IsEmpty());
    setEnterTestMode(true);
    EXPECT_THAT(autoTest(id, { 5, 2 }), ElementsAre("05 02 01"));
    doubles::SystemDouble::setUniqueId(0xAB123456);
    EXPECT_THAT(autoTest(id, { 5, 2 }), ElementsAre("05 02 00 30 78 30 30 30 32 61 62 31 32 33 34 35 36 00"));
    EXPECT_THAT(autoTest(id, { 5, 3 }), ElementsAre("05 03 00"));
    report(1, 2);
    EXPECT_THAT(autoTest(id, { 5, 3 }), ElementsAre("05 03 01"));
    EXPECT_THAT(autoTest(id, { 5, 9 }), ElementsAre("05 09"));
    EXPECT_THAT(autoTest(id, { 5 }), IsEmpty());
    takeSent();
    EXPECT_THAT(autoTest(id, { 5, 4 }), IsEmpty());
    EXPECT_THAT(takeSent(), ElementsAre(toProgram(RMSG_BT_CONTROL, 14)));
    ASSERT_EQ(bluetooth.getTimerInterval(BluetoothApplication::autoTestTimer), 1000);
    fire(bluetooth, BluetoothApplication::autoTestTimer);
    EXPECT_THAT(answers(), ElementsAre("05 04 01"));

    for (int flood = 0; flood < 64; ++flood)
        EXPECT_THAT(autoTest(id, { 5, 4 }), IsEmpty());
    EXPECT_THAT(autoTest(id, { 5, 4 }), ElementsAre("05 04 01"));
}
