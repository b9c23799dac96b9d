#pragma once

#include "EngineApi/DeviceStatus.h"
#include "EngineLayer/devices/DeviceTable.h"
#include "EngineLayer/devices/SourceAgreement.h"
#include "dsp/AudioChannel.h"
#include "dsp/DSPSettingHelper.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "kernel/SystemTimer.h"
#include "platform/base/ListenerList.h"
#include "platform/base/Shared.h"
#include "platform/base/Threads.h"

#include <cstdint>

namespace LowLayer
{
class BytePool;
}

namespace EngineLayer
{

/**
    Knows which devices are there and reports them to the microcontroller, agrees with it on the source, starts the
    first source, sends the heartbeat and sets up the hardware that has no owner of its own. Handlers run on the group
    thread; the functions of EngineApi/DeviceStatus.h may be called from any thread.
*/
class DeviceStatusManager : public Kernel::ComponentTask,
                            public Kernel::SystemTimer,
                            public Dsp::CDSPStateListener,
                            public Kernel::Singleton<DeviceStatusManager>
{
public:
    enum Timer : int {
        lastMemoryTimer = 1,
        usbScanTimer = 2,
        antitheftLeftTimer = 3,
        cameraVideoTimer = 4,
        heartbeatTimer = 5,
        autoTestTimer = 6,
        powerOffTimer = 7
    };

    void initialize() override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;

    /** Stored at once; listeners and microcontroller are told from the group thread. Any thread. */
    void setDeviceState(int kind, bool present);
    bool getDeviceState(int kind) const { return kind != EngineApi::satelliteTuner && devices.isPresent(kind); }
    /** Called on the group thread; none is called after its removal has returned. Any thread. */
    Platform::ListenerList<EngineApi::DeviceStateInterface> listeners;

    /** Lets the DSP follow, on the group thread, when the source has another sound channel. Any thread. */
    void audioChannelChanged();

    /** Runs the start page when it is an available source; keeps it when its device may still come. Group thread. */
    void runStartSrc();
    void startSourceWhenReady();

    int getStartPage() const { return startPage; }
    bool isISRCondition() const { return conditions.isrMode; }
    int getAntitheftValue() const { return conditions.antitheftValue; }
    bool isDiscAudioAvailable() const { return (discWord & discAudioBit) != 0; }
    bool isDiscVideoAvailable() const { return (discWord & discVideoBit) != 0; }

    void setLowBatteryAlert(bool on);
    bool isLowBatteryAlert() const { return lowBatteryAlert; }
    void setEnterTestMode(bool on) { testMode = on; }
    bool getEnterTestMode() const { return testMode; }

    /** On the threads of the DSP's callers. */
    void onVolumeChanged(int volume, int zone, bool show) override;
    void onSecondNotice(int, int) override {}
    void onMuteChanged(bool mute) override;
    void onFourthNotice(int) override {}

    /** What decides the state that follows booting. */
    struct StartConditions
    {
        int antitheftMode = 4; ///< 2 and 3 lock the unit
        int antitheftValue = 0;
        bool isrMode = false;
    };
    static int firstState(const StartConditions& conditions);

private:
    friend class Kernel::Singleton<DeviceStatusManager>;
    DeviceStatusManager();

    /** To itself: a device state was changed from outside. */
    static constexpr juce::int32 msgReportChanges = 1;
    /** To itself: arg1 1 when the camera gives a picture. */
    static constexpr juce::int32 msgCameraVideo = 2;
    /** To itself: a page may have another sound channel. */
    static constexpr juce::int32 msgAudioChannel = 3;
    static constexpr juce::uint32 discAudioBit = 1;
    static constexpr juce::uint32 discVideoBit = 2;

    void startHardware();
    void start();
    void timerExpired(int timerId);
    void powerOffConfirmed();
    void standby(juce::int32 what);
    void stopHeartbeat();

    void hostEvent(int command, const Kernel::Payload& payload);
    void lastMemoryAnswered();
    void mcuRequestsSource(McuSource source);
    void startWith(int page);
    void mcuAsksDeviceStatus();
    void mcuPowersOff();

    void sourceChanged();
    void followAudioChannel();
    void takeSoundOf(int page);
    void runPage(int page);
    void scanUsb();
    void pollCameraVideo();
    void cameraVideoPolled(bool signal);
    void handOverToAutoTest();
    void reportChanges();
    void sendDeviceStatus();

    bool waitingLastMemory = false;
    Platform::Shared<int> startPage;
    DeviceTable devices;
    bool cameraVideoSignal = false;
    bool standbyRefused = false; ///< an unknown value is named once
    bool cameraPollPending = false;
    SourceAgreement agreement;
    int audioChannel = Dsp::eAudioAVOff; ///< what the DSP was told last
    Platform::Shared<bool> lowBatteryAlert { false };
    Platform::Mutex alertLock;
    Platform::Shared<bool> testMode { false };
    bool factoryResetActive = false;
    const StartConditions conditions {};
    const juce::uint32 discWord = discAudioBit | discVideoBit;
};

} // namespace EngineLayer
