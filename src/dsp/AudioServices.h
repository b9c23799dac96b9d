#pragma once

#include "kernel/Actor.h"
#include "platform/base/Time.h"

#include <cstdint>
#include <string>

namespace Dsp
{

class DSPSettingHelper;

// The order of the functions is a contract, so the reserved ones keep their places.

/**
    Audio control: volumes, mute, routing and levels of the DSP. Volumes are steps 0 to 50. Zones are 1 and 2. Any
    thread; calls are carried out one after the other. Failures of the bus are logged where they happen.
*/
class ACService
{
public:
    virtual ~ACService() = default;

    virtual void toggleMute(bool notify) = 0;
    virtual bool isMute() = 0;
    /** The zone of calls without a zone. */
    virtual void setCurrentZone(int zone) = 0;
    // Each of the next five answers 0, or -1 for an unknown zone. Any step ends the mute and reports that.
    virtual int volumeUp(int steps, int zone) = 0;
    virtual int volumeUp(int steps) = 0;
    virtual int volumeDown(int steps, int zone) = 0;
    virtual int volumeDown(int steps) = 0;
    /** Zone 0 changes nothing and answers 0. */
    virtual int setVolume(int volume, int zone) = 0;
    virtual int reserved9() { return 0; }
    virtual void reserved10() {}
    /** The alert sound is heard whatever plays. */
    virtual void setAlert(bool on) = 0;
    virtual void reserved12() {}
    virtual void reserved13() {}
    virtual void reserved14() {}
    virtual void reserved15() {}
    virtual void reserved16() {}
    virtual void reserved17() {}
    /** Takes over a channel (`eAudio*`) after 1000 ms without muting. */
    virtual void setSource(int parameter, int audioChannel) = 0;
    virtual void reserved19() {}
    /** Mutes, and restores input, level, mute and channel gains 1000 ms later. */
    virtual void changeSource(int audioChannel) = 0;
    virtual void reserved21() {}
    virtual void reserved22() {}
    virtual void reserved23() {}
    virtual void reserved24() {}
    virtual void reserved25() {}
    virtual void reserved26() {}
    virtual void reserved27() {}
    virtual void reserved28() {}
    virtual void reserved29() {}
    virtual void reserved30() {}
    virtual int reserved31() { return 0; }
    virtual void reserved32() {}
    virtual void reserved33() {}
    virtual void reserved34() {}
    // A setting of zone 2 has changed.
    virtual void zone2OnChanged() = 0;
    virtual void zone2OutputModeChanged() = 0;
    virtual void zone2VolumeModeChanged() = 0;
    virtual void applySourceLevel() = 0;
    virtual void setSubwooferDirect(bool on) = 0;
    /** dB, kept for the next restore. */
    virtual void setChannelGains(int gain1, int gain2, int gain3, int gain4) = 0;
};

/** Tone: equaliser, balance and fader, subwoofer, filters. Any thread, as above. */
class EQService
{
public:
    virtual ~EQService() = default;

    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}
    virtual void reserved4() {}
    virtual int applyBalance() = 0; ///< both apply balance and fader
    virtual int applyFader() = 0;
    virtual int reserved7() { return 0; }
    virtual int reserved8() { return 0; }
    virtual int reserved9() { return 0; }
    virtual void setSubwooferLevel(int index) = 0; ///< 0 to 13
    virtual bool reserved11() { return false; }
    virtual void reserved12() {}
    virtual int reserved13() { return 0; }
    virtual bool reserved14() { return false; }
    virtual void setHighPass(int index) = 0; ///< 0 (off) to 3
    /** Band 0 to 6 of the user's curve; `stored` as in the settings, 0 to 12. */
    virtual void setCustomBand(int band, int stored) = 0;
    virtual bool applyPreset() = 0;
    virtual bool reserved18() { return false; }
    virtual bool reserved19() { return false; }
    virtual bool reserved20() { return false; }
    virtual bool reserved21() { return false; }
    virtual void setSwitch(int which, bool on) = 0;
    virtual bool updateSubwoofer() = 0;
    virtual void setDmeState(bool on) = 0;
};

/** What the DSP is told, and how it takes it. */
struct DspStatus
{
    bool isBooted = false; ///< what it needs for that was sent
    bool isMuted = false, isAlerting = false;
    bool changesSource = false; ///< muted until the new source is there
    Kernel::Actor muter;        ///< who has muted or unmuted it last
    int channel = 0;            ///< of the source, `eAudio*`
    int input = 0;              ///< code of the input that is selected; 0 before the first
    std::uint64_t blocks = 0;   ///< that it has confirmed
    std::uint64_t failures = 0;
    std::string lastFailure; ///< "" for none
    Platform::Clock::time_point lastFailureAt;
    std::string leftAlone; ///< why nothing is written to it; "" when it is written to
};

/** Owner of the two. Reached through EngineApi::Provided<ChipManager>. */
class ChipManager
{
public:
    virtual ~ChipManager() = default;
    /** The first call boots the DSP; every call writes the equaliser anew. */
    virtual bool init(DSPSettingHelper& helper) = 0;
    virtual EQService& getEQService() = 0;
    virtual ACService& getACService() = 0;
    /** Any thread; it waits for no bus. */
    virtual DspStatus getStatus() const { return {}; }
};

} // namespace Dsp
