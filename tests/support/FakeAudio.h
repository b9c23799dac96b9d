#pragma once

#include "dsp/AudioServices.h"

#include <string>
#include <vector>

/** Both audio services without a DSP; writes down what is asked of them. */
class FakeAudio : public Dsp::ChipManager, private Dsp::ACService, private Dsp::EQService
{
public:
    bool init(Dsp::DSPSettingHelper&) override { return note("init"); }
    Dsp::EQService& getEQService() override { return *this; }
    Dsp::ACService& getACService() override { return *this; }

    std::vector<std::string> calls;

private:
    bool note(const std::string& call)
    {
        calls.push_back(call);
        return true;
    }
    static std::string number(const char* call, int value) { return std::string(call) + " " + std::to_string(value); }
    int step(const char* call, int steps, int zone) { return note(number(number(call, steps).c_str(), zone)) ? 0 : -1; }

    void toggleMute(bool) override { note(muted ? "mute off" : "mute on"), muted = !muted; }
    bool isMute() override { return muted; }
    void setCurrentZone(int zone) override { note(number("zone", zone)), currentZone = zone; }
    int volumeUp(int steps, int zone) override { return step("volume +", steps, zone); }
    int volumeUp(int steps) override { return volumeUp(steps, currentZone); }
    int volumeDown(int steps, int zone) override { return step("volume -", steps, zone); }
    int volumeDown(int steps) override { return volumeDown(steps, currentZone); }
    int setVolume(int volume, int zone) override { return step("volume", volume, zone); }
    void setAlert(bool on) override { note(on ? "alert on" : "alert off"); }
    void setSource(int, int channel) override { note(number("source unmuted", channel)); }
    void changeSource(int channel) override { note(number("source", channel)); }
    void zone2OnChanged() override { note("zone 2"); }
    void zone2OutputModeChanged() override { note("zone 2 output mode"); }
    void zone2VolumeModeChanged() override { note("zone 2 volume mode"); }
    void applySourceLevel() override { note("source level"); }
    void setSubwooferDirect(bool on) override { note(on ? "subwoofer direct" : "subwoofer not direct"); }
    void setChannelGains(int, int, int, int) override { note("channel gains"); }

    int applyBalance() override { return note("balance") ? 0 : -1; }
    int applyFader() override { return note("fader") ? 0 : -1; }
    void setSubwooferLevel(int index) override { note(number("subwoofer level", index)); }
    void setHighPass(int index) override { note(number("high-pass", index)); }
    void setCustomBand(int band, int stored) override { step("band", band, stored); }
    bool applyPreset() override { return note("preset"); }
    void setSwitch(int which, bool on) override { step("switch", which, on ? 1 : 0); }
    bool updateSubwoofer() override { return note("subwoofer"); }
    void setDmeState(bool on) override { note(on ? "dme on" : "dme off"); }

    bool muted = false;
    int currentZone = 1;
};
