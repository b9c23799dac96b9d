#include "EngineLayer/devices/DeviceStatusManager.h"

#include "EngineApi/SystemState.h"
#include "EngineLayer/devices/VideoDecoder.h"
#include "doubles/LinesDouble.h"
#include "platform/devices/UnitLines.h"
#include "support/ApplicationFixture.h"
#include "support/LogCapture.h"
#include "support/WithMcu.h"

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using Platform::doubles::LinesDouble;
using Bytes = McuLink::Bytes;
using Calls = std::vector<std::string>;

namespace
{

class DeviceStatusTest : public WithMcu<ApplicationFixture>
{
protected:
    DeviceStatusTest()
        : WithMcu("22 = 5\n284 = \"Aft\"\n",
                  std::initializer_list<int> { mbFM, mbUSBAudio, mbAuxin2, mbAVOff, mbAntitheft })
    {
        LinesDouble::reset();
        Provided<LowBatteryBar>::set(&lowBatteryBar);
        add(&manager, Kernel::deviceStatusManagerId);
    }
    ~DeviceStatusTest() override { Provided<LowBatteryBar>::set(nullptr); }

    using Commands = std::vector<std::pair<int, Bytes>>;

    /** What the unit says to the microcontroller, which acknowledges all of it. */
    Commands commands()
    {
        Commands said;
        for (const auto& frame : mcu.converse([this] { run(); }))
            said.emplace_back(frame.command, frame.data);
        return said;
    }

    void hostEvent(int command, const Bytes& data = {})
    {
        send(Kernel::deviceStatusManagerId, Kernel::MSG_HOST_EVENT, command, static_cast<int>(data.size()),
             pooled(data));
    }
    void toManager(juce::int32 id, juce::int32 arg1 = 0) { send(Kernel::deviceStatusManagerId, id, arg1); }
    void fireTimer(int timer)
    {
        manager.expire(timer);
        run();
    }

    FakeBar<LowBatteryBar> lowBatteryBar;
    DeviceStatusManager& manager = *DeviceStatusManager::getInstance();
};

class NotingListener : public DeviceStateInterface
{
public:
    void onDeviceStateChanged(int kind) override { kinds.push_back(kind); }
    std::vector<int> kinds;
};

} // namespace

TEST(VideoDecoderTest, IsSetUpOnceAndSaysWhetherThereIsAPicture)
{
    LinesDouble::reset();
    VideoDecoder decoder;
    decoder.initialise();
    const auto writes = LinesDouble::takeRegisterWrites();
    ASSERT_EQ(writes.size(), 46u);
    EXPECT_EQ(writes.front(), (LinesDouble::RegisterWrite { 0x88, 0x02, 0x44 }));
    EXPECT_EQ(writes.back(), (LinesDouble::RegisterWrite { 0x88, 0x2F, 0xE0 }));
    EXPECT_EQ(LinesDouble::getPin(Platform::videoDecoderLine), 1);
    decoder.initialise();
    EXPECT_TRUE(LinesDouble::takeRegisterWrites().empty());

    for (const auto& [value, signal] :
         std::map<int, bool> { { 0x48, true }, { 0xFF, true }, { 0x40, false }, { 0x08, false } })
    {
        LinesDouble::setRegister(0x88, 0x01, static_cast<std::uint8_t>(value));
        EXPECT_EQ(decoder.hasSignal(), signal) << value;
    }
    LinesDouble::setRegister(0x88, 0x01, 0x48);
    LinesDouble::failI2cDevice(0x88, true);
    EXPECT_FALSE(decoder.hasSignal());
    EXPECT_EQ(LinesDouble::getOpenI2cDevices(), 0);

    const LogCapture log;
    VideoDecoder silent;
    silent.initialise();
    EXPECT_EQ(log.count("the video decoder does not take register 0x02 and is not set up"), 1);
}

TEST_F(DeviceStatusTest, TheLastMemoryIsAskedForUntilItIsAnsweredAndStartsTheHeartbeat)
{
    toManager(Kernel::MSG_SYS_START);
    EXPECT_EQ(commands(), (Commands { { EVENT_GET_LAST_MEMORY, {} } }));
    fireTimer(DeviceStatusManager::lastMemoryTimer);
    EXPECT_EQ(commands(), (Commands { { EVENT_GET_LAST_MEMORY, {} } }));
    EXPECT_TRUE(manager.isTimerRunning(DeviceStatusManager::lastMemoryTimer));
    takePosted();

    hostEvent(EVENT_GET_LAST_MEMORY);
    EXPECT_EQ(commands(), (Commands { { EVENT_HEAT_BEAT, { 0 } } }));
    expectPosted(Kernel::navicoManagerId, Kernel::MSG_NAVICO_REPORT, 0, 0);
    EXPECT_EQ(audio.calls, Calls { "init" });
    const auto broadcasts = Platform::IpcDouble::takeNamedBroadcasts();
    ASSERT_EQ(broadcasts.size(), 1u);
    EXPECT_EQ(broadcasts[0].bundle->getInt("index", 0), 36);
    EXPECT_EQ(broadcasts[0].bundle->getInt("value", 0), 5) << "the setting from the store that the start has loaded";
    fireTimer(DeviceStatusManager::lastMemoryTimer);
    EXPECT_EQ(commands(), Commands {});
    EXPECT_FALSE(manager.isTimerRunning(DeviceStatusManager::lastMemoryTimer));

    EXPECT_EQ(manager.getTimerInterval(DeviceStatusManager::heartbeatTimer), 3000);
    fireTimer(DeviceStatusManager::heartbeatTimer);
    EXPECT_EQ(commands(), (Commands { { EVENT_HEAT_BEAT, { 0 } } }));
    toManager(Kernel::MSG_HEARTBEAT_STOP);
    EXPECT_FALSE(manager.isTimerRunning(DeviceStatusManager::heartbeatTimer));
}

TEST_F(DeviceStatusTest, TheFirstSourceRequestStartsTheUnitAndLaterOnesSwitch)
{
    hostEvent(EVENT_SRC_SWITCH, { 10 });
    EXPECT_EQ(manager.getStartPage(), NUM_OF_PAGES) << "too short";
    hostEvent(EVENT_SRC_SWITCH, { 1, 0 });
    EXPECT_EQ(commands(), (Commands { { EVENT_MUTE_STATE, { 1 } } }));
    EXPECT_EQ(manager.getStartPage(), mbFM);
    EXPECT_EQ(requests(), Calls {}) << "the state machine starts it";

    manager.startSourceWhenReady();
    EXPECT_EQ(requests(), Calls { "mbFM run auto" });
    EXPECT_EQ(manager.getStartPage(), NUM_OF_PAGES);

    hostEvent(EVENT_SRC_SWITCH, { 10, 0 });
    hostEvent(EVENT_SRC_SWITCH, { 10, 0 });
    EXPECT_EQ(requests(), Calls { "mbUSBAudio run auto" }) << "a repeated request only confirms";
    EXPECT_EQ(commands(), Commands {});
}

TEST(DeviceStatusStateTest, TheFirstStateFollowsTheLocks)
{
    const std::pair<DeviceStatusManager::StartConditions, int> cases[] = {
        { {}, kNormalRun },
        { { 4, 0, true }, kISRMode },
        { { 2, 0, true }, kAntitheft },
        { { 3, 0, false }, kAntitheft },
        { { 2, 1, false }, kLocked },
        { { 3, 5, true }, kLocked },
        { { 1, 7, false }, kNormalRun },
    };
    for (const auto& [conditions, state] : cases)
        EXPECT_EQ(DeviceStatusManager::firstState(conditions), state) << conditions.antitheftMode;
}

TEST_F(DeviceStatusTest, AStartPageThatCannotRunIsReplacedUnlessItsDeviceMayCome)
{
    pages[mbUSBAudio]->available = false;
    pages[mbAuxin2]->available = false;
    hostEvent(EVENT_SRC_SWITCH, { 10, 0 });
    manager.runStartSrc();
    EXPECT_EQ(manager.getStartPage(), mbUSBAudio);
    EXPECT_EQ(requests(), Calls {});
    pages[mbUSBAudio]->available = true;
    manager.runStartSrc();
    EXPECT_EQ(requests(), Calls { "mbUSBAudio run auto" });
    EXPECT_EQ(manager.getStartPage(), NUM_OF_PAGES);

    hostEvent(EVENT_GET_LAST_MEMORY);
    hostEvent(EVENT_SRC_SWITCH, { 5, 0 });
    manager.runStartSrc();
    EXPECT_EQ(requests(), Calls { "mbAVOff run auto" });
    EXPECT_EQ(manager.getStartPage(), NUM_OF_PAGES);

    manager.startTimer(DeviceStatusManager::antitheftLeftTimer, 2000);
    fireTimer(DeviceStatusManager::antitheftLeftTimer);
    EXPECT_FALSE(manager.isTimerRunning(DeviceStatusManager::antitheftLeftTimer));
    EXPECT_EQ(requests(), (Calls { "mbAVOff run auto", "mbAntitheft stop auto" }))
        << "the source, then off with the lock";
}

// No schedule has run, so the unit's source has no name at the microcontroller: type 0, number 0.
TEST_F(DeviceStatusTest, AChangeOfSourceIsReportedUnlessTheFactoryResetRuns)
{
    toManager(Kernel::MSG_NORMAL_SOURCE, mbCamera);
    EXPECT_EQ(commands(), (Commands { { EVENT_SRC_SWITCH, { 0, 0 } } }));
    hostEvent(EVENT_SRC_SWITCH_REPORT, { 0, 0 });
    hostEvent(EVENT_SRC_SWITCH, { 1, 0 });
    commands();
    toManager(Kernel::MSG_NORMAL_SOURCE);
    EXPECT_EQ(commands(), Commands {}) << "still on the way to FM";
    hostEvent(EVENT_SRC_SWITCH, { 0, 0 });
    toManager(Kernel::MSG_NORMAL_SOURCE);
    EXPECT_EQ(commands(), (Commands { { EVENT_SRC_SWITCH, { 0, 0 } } }));
    hostEvent(EVENT_SRC_SWITCH_REPORT, { 0, 0 });
    toManager(Kernel::MSG_FACTORY_RESET);
    toManager(Kernel::MSG_NORMAL_SOURCE);
    EXPECT_EQ(commands(), Commands {});
}

TEST_F(DeviceStatusTest, DeviceChangesReachListenersAndMcu)
{
    NotingListener listener;
    addDeviceStateListener(&listener);
    setDeviceState(iPodConnected, true);
    setDeviceState(satelliteTuner, true);
    EXPECT_TRUE(listener.kinds.empty()) << "told on the group thread only";
    EXPECT_EQ(commands(), (Commands { { EVENT_DEVICE_STATUS, { 0, 0x12 } } }));
    EXPECT_EQ(listener.kinds, (std::vector { 1, 18 }));
    EXPECT_TRUE(getDeviceState(iPodConnected));
    EXPECT_FALSE(getDeviceState(satelliteTuner));

    hostEvent(EVENT_DEVICE_STATUS);
    EXPECT_EQ(commands(), (Commands { { EVENT_DEVICE_STATUS, { 0, 0x12 } } })) << "asked for, unchanged";
    removeDeviceStateListener(&listener);
    setDeviceState(iPodConnected, false);
    run();
    EXPECT_EQ(listener.kinds.size(), 2u);
}

TEST_F(DeviceStatusTest, StoragesAndTheCameraAreWatched)
{
    const juce::File media(Platform::Configuration::get().mediaRoot);
    NotingListener listener;
    addDeviceStateListener(&listener);
    toManager(Kernel::MSG_SYS_START);
    commands();
    fireTimer(DeviceStatusManager::usbScanTimer);
    EXPECT_EQ(commands(), Commands {});
    media.getChildFile("Hard Disk3").createDirectory();
    fireTimer(DeviceStatusManager::usbScanTimer);
    fireTimer(DeviceStatusManager::usbScanTimer);
    EXPECT_EQ(commands(), (Commands { { EVENT_DEVICE_STATUS, { 1, 0 } } }));
    media.getChildFile("Hard Disk3").deleteRecursively();
    hostEvent(EVENT_DEVICE_STATUS);
    EXPECT_EQ(commands(), (Commands { { EVENT_DEVICE_STATUS, { 0, 0 } } }));

    for (const bool signal : { true, false })
    {
        LinesDouble::setRegister(0x88, 0x01, signal ? 0x48 : 0);
        fireTimer(DeviceStatusManager::cameraVideoTimer);
        EXPECT_EQ(getDeviceState(cameraVideo), signal);
    }
    EXPECT_EQ(listener.kinds, (std::vector { 0, 0, 16, 16 }));

    const juce::ScopedValueSetter<bool> card(Platform::Configuration::get().sdAsUsb, true);
    media.getChildFile("Hard Disk").createDirectory();
    fireTimer(DeviceStatusManager::usbScanTimer);
    EXPECT_FALSE(getDeviceState(usbStorage)) << "the card stands for the first mount point";
    media.getChildFile("SD").createDirectory();
    fireTimer(DeviceStatusManager::usbScanTimer);
    EXPECT_TRUE(getDeviceState(usbStorage));
}

TEST_F(DeviceStatusTest, PowerOffIsPassedOnWhenConfirmedOrAfterTheTimeOut)
{
    hostEvent(EVENT_POWER_OFF_READY);
    EXPECT_EQ(remote.calls, (Calls { "dimmer 0", "restore after 0", "clear and forget" }));
    EXPECT_EQ(manager.getTimerInterval(DeviceStatusManager::powerOffTimer), 6000);
    takePosted();
    fireTimer(DeviceStatusManager::powerOffTimer);
    expectPosted(Kernel::systemStateManagerId, Kernel::MSG_POWER_OFF, 0, 0);
    EXPECT_FALSE(manager.isTimerRunning(DeviceStatusManager::powerOffTimer));
    hostEvent(EVENT_POWER_OFF_READY);
    takePosted();
    toManager(Kernel::MSG_POWER_OFF_CONFIRM, mbSirius);
    expectPosted(Kernel::systemStateManagerId, Kernel::MSG_POWER_OFF, 0, 0);
    EXPECT_FALSE(manager.isTimerRunning(DeviceStatusManager::powerOffTimer));
}

TEST_F(DeviceStatusTest, TheLowBatteryAlertSoundsAndIsShownOnce)
{
    for (const bool on : { false, true, true, false })
        setLowBatteryAlert(on);
    EXPECT_EQ(audio.calls, (Calls { "alert on", "alert off" }));
    EXPECT_EQ(lowBatteryBar.messages.size(), 2u);
}
