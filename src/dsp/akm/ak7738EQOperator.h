#pragma once

#include "dsp/AudioServices.h"
#include "dsp/akm/FilterMap.h"
#include "platform/base/Threads.h"

#include <juce_core/juce_core.h>

namespace Dsp
{

/** Tone control on the AK7738. One call after the other, whatever the thread. Before `init` nothing is done. */
class ak7738EQOperator : public EQService
{
public:
    /** Writes everything from the settings; may be called again. */
    void init(DSPSettingHelper& settingHelper, ACService& audioControl);

    int applyBalance() override;
    int applyFader() override;
    void setSubwooferLevel(int index) override;
    void setHighPass(int index) override;
    void setCustomBand(int band, int stored) override;
    bool applyPreset() override;
    void setSwitch(int which, bool on) override;
    bool updateSubwoofer() override;
    void setDmeState(bool on) override;

private:
    void applyBalanceFader();
    void adjustSpeakers();
    void writeUserBand(std::size_t band);
    bool presetGains(std::array<int, numOfUserBands>& gains) const;

    Platform::Mutex lock;
    DSPSettingHelper* helper = nullptr;
    ACService* audio = nullptr;
    bool dmeOn = false;
    bool subwooferOn = false;
    std::array<int, numOfUserBands> baseGains {};
};

} // namespace Dsp
