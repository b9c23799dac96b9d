#pragma once

namespace Dsp
{

/** Told of changes of volume and mute by the DSP setting helper, on the thread that made the change. */
class CDSPStateListener
{
public:
    virtual ~CDSPStateListener() = default;
    virtual void onVolumeChanged(int volume, int zone, bool show) = 0;
    virtual void onSecondNotice(int first, int second) = 0;
    virtual void onMuteChanged(bool mute) = 0;
    virtual void onFourthNotice(int value) = 0;
};

/**
    Where the audio operators read the user's settings and keep the volumes. Nothing is cached but the four volumes. A
    setting outside its range reads as the nearest value inside it. Volumes are 0 to 50, gains in dB. Any thread.
*/
class DSPSettingHelper
{
public:
    virtual ~DSPSettingHelper() = default;

    virtual int getVolume(bool zone2) = 0;
    virtual int getNaviVolume() = 0;
    virtual int getPhoneVolume() = 0;
    /** Kept at once; the file is written 3000 ms after the last step. */
    virtual void setVolume(int volume, bool zone2) = 0;
    virtual void setNaviVolume(int volume) = 0;  ///< written at once
    virtual void setPhoneVolume(int volume) = 0; ///< written at once
    virtual int getSetting14() = 0;
    virtual int getSetting264() = 0;
    virtual int getEqPreset() = 0; ///< 0 tone controls, 1 to 3 curves, 4 the user's
    virtual int reserved10() { return 0; }
    virtual int reserved11() { return 0; }
    virtual int reserved12() { return 0; }
    virtual bool isEqSwitchOn() = 0;
    virtual int getBalance() = 0; ///< 0 (right) to 12 (left), 6 is the middle: against the setting's direction
    virtual int getFader() = 0;   ///< 0 (front) to 12 (rear), 6 is the middle: against the setting's direction
    virtual int getBassGain() = 0;
    virtual int reserved17() { return 0; }
    virtual int reserved18() { return 0; }
    virtual int getMiddleGain() = 0;
    virtual int reserved20() { return 0; }
    virtual int reserved21() { return 0; }
    virtual int getTrebleGain() = 0;
    virtual int reserved23() { return 0; }
    virtual int reserved24() { return 0; }
    virtual int getSubwooferLevelIndex() = 0; ///< 0 to 13
    virtual bool isSubwooferOn() = 0;
    virtual bool reserved27() { return false; }
    virtual int getCrossoverFrequency() = 0; ///< Hz: 0, 55, 85 or 120
    virtual int getHighPassIndex() = 0;      ///< 0 to 3
    // Band levels, -7 to 7.
    virtual int getBandLevel257() = 0;
    virtual int getBandLevel261() = 0;
    virtual int getBandLevel258() = 0;
    virtual int getBandLevel259() = 0;
    virtual int getBandLevel260() = 0;
    virtual int getBandLevel262() = 0;
    virtual int getBandLevel263() = 0;
    virtual int reserved37() { return 0; }
    virtual int getSourceLevelIndex() = 0;     ///< 0 to 6
    virtual int getCustomEqGain(int band) = 0; ///< band 0 to 6
    virtual bool isZone2On() = 0;
    virtual int getZone2VolumeMode() = 0; ///< 0: zone 2 follows the steps of zone 1
    virtual int getZone2OutputMode() = 0; ///< 0 to 2
    // To the listener, if there is one.
    virtual void notifyVolume(int volume, int zone, bool show) = 0;
    virtual void notifyPair(int first, int second) = 0;
    virtual void notifyMute(bool mute) = 0;
    virtual void notifyFourth(int value) = 0;
};

} // namespace Dsp
