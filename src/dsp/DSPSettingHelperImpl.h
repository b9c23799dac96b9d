#pragma once

#include "dsp/DSPSettingHelper.h"
#include "kernel/Singleton.h"
#include "platform/base/Shared.h"
#include "platform/base/Threads.h"
#include "platform/base/Time.h"
#include "platform/config/CVXIniReadWrite.h"

#include <array>
#include <juce_events/juce_events.h>

namespace Dsp
{

/**
    The settings and volumes of this unit: volumes in `VX_Volume.ini` below the system path, all else in the settings
    store. A volume that the file lacks, or that is no step, is 0: never a loud start. A write that is due when the
    process ends is made then.
*/
class DSPSettingHelperImpl : public DSPSettingHelper,
                             public Kernel::Singleton<DSPSettingHelperImpl>,
                             private Platform::Timer
{
public:
    DSPSettingHelperImpl();
    ~DSPSettingHelperImpl() override;

    /** The one listener; null for none. No call to the one before runs after it returns. */
    void setListener(CDSPStateListener* newListener);

    /** A write that is due later is made now. Message thread. */
    void storeNow();

    int getVolume(bool zone2) override;
    int getNaviVolume() override;
    int getPhoneVolume() override;
    void setVolume(int volume, bool zone2) override;
    void setNaviVolume(int volume) override;
    void setPhoneVolume(int volume) override;
    int getSetting14() override;
    int getSetting264() override;
    int getEqPreset() override;
    bool isEqSwitchOn() override;
    int getBalance() override;
    int getFader() override;
    int getBassGain() override;
    int getMiddleGain() override;
    int getTrebleGain() override;
    int getSubwooferLevelIndex() override;
    bool isSubwooferOn() override;
    int getCrossoverFrequency() override;
    int getHighPassIndex() override;
    int getBandLevel257() override;
    int getBandLevel261() override;
    int getBandLevel258() override;
    int getBandLevel259() override;
    int getBandLevel260() override;
    int getBandLevel262() override;
    int getBandLevel263() override;
    int getSourceLevelIndex() override;
    int getCustomEqGain(int band) override;
    bool isZone2On() override;
    int getZone2VolumeMode() override;
    int getZone2OutputMode() override;
    void notifyVolume(int volume, int zone, bool show) override;
    void notifyPair(int first, int second) override;
    void notifyMute(bool mute) override;
    void notifyFourth(int value) override;

    static constexpr int loudestVolume = 50;
    static constexpr int writeDelayMs = 3000;

private:
    enum Volume { source, zone2, navigation, phone, numOfVolumes };

    int get(Volume which) const { return volumes[static_cast<std::size_t>(which)]; }
    void set(Volume which, int volume);
    void timerCallback() override;

    Platform::CVXIniReadWrite file;
    std::array<Platform::Shared<int>, numOfVolumes> volumes {};
    Platform::Mutex listenerLock; ///< recursive: a listener may cause another notice
    CDSPStateListener* listener = nullptr;
};

} // namespace Dsp
