#pragma once

#include "dsp/AudioChannel.h"
#include "dsp/AudioServices.h"
#include "platform/base/Threads.h"
#include "platform/base/Time.h"

#include <array>
#include <juce_events/juce_events.h>

namespace Dsp
{

/**
    Audio control on the AK7738. One lock is held over each operation with its notices and its writes, so that the DSP,
    the stored volumes and the listener always agree. Before `init`, only the source and the alert are kept for later.
*/
class ak7738ACOperator : public ACService, private Platform::MultiTimer
{
public:
    /** Boots the DSP. Later calls change nothing. */
    void init(DSPSettingHelper& settingHelper);

    void toggleMute(bool notify) override;
    bool isMute() override;
    void setCurrentZone(int zone) override;
    int volumeUp(int steps, int zone) override;
    int volumeUp(int steps) override;
    int volumeDown(int steps, int zone) override;
    int volumeDown(int steps) override;
    int setVolume(int volume, int zone) override;
    void setAlert(bool on) override;
    void setSource(int parameter, int audioChannel) override;
    void changeSource(int audioChannel) override;
    void zone2OnChanged() override;
    void zone2OutputModeChanged() override;
    void zone2VolumeModeChanged() override;
    void applySourceLevel() override;
    void setSubwooferDirect(bool on) override;
    void setChannelGains(int gain1, int gain2, int gain3, int gain4) override;

    /** What of it is the audio control's. */
    DspStatus getStatus() const;

    static constexpr int restoreTimer = 1;
    static constexpr int restoreMs = 1000;
    static constexpr int compensationTimer = 2;
    static constexpr int compensationMs = 500;
    /** One-shot timers of a source change; message thread, or a test in its place. */
    void timerCallback(int timerId) override;

private:
    int volumeStep(int delta, int zone);
    void stepZone1(int delta);
    void stepZone2(int delta);
    void writeMainVolume(int step);
    void applyZoneOutputs();
    void writeMute(bool muted);
    void selectInput(int inputCode);
    int zoneVolume(int zone);

    Platform::Mutex lock;
    DSPSettingHelper* helper = nullptr;
    bool zone2On = false;
    bool zone2FollowsSteps = false;
    int zone2OutputMode = 2;
    int inputParameter = 24;
    int channel = eAudioAVOff;
    int selectedInput = 0; ///< none since the boot
    int currentZone = 1;
    bool mute = false;
    Kernel::Actor muter;
    bool alertActive = false;
    bool subwooferDirect = false;
    std::array<int, 4> channelGains {};
};

} // namespace Dsp
