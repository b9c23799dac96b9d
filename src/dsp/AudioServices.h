#pragma once

/** What the managers need of the audio DSP. Each is reached through EngineApi::Provided<...>. */

/** Told of changes of volume and mute by the DSP setting helper. */
class CDSPStateListener
{
public:
    virtual ~CDSPStateListener() = default;
    virtual void onVolumeChanged(int volume, int zone, bool show) = 0;
    virtual void onSecondNotice(int first, int second) = 0;
    virtual void onMuteChanged(bool mute) = 0;
    virtual void onFourthNotice(int value) = 0;
};

/** Brings the DSP up. */
class ChipManager
{
public:
    virtual ~ChipManager() = default;
    /** Loads the DSP; from then on the listener hears of changes. */
    virtual bool init(CDSPStateListener& listener) = 0;
};

/** Audio control: routing, levels, mute. */
class ACService
{
public:
    virtual ~ACService() = default;
    virtual void changeSource(int audioChannel) = 0;
    virtual void setAlert(bool on) = 0;
};
