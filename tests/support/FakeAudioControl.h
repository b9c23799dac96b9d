#pragma once

#include "EngineApi/Provided.h"
#include "dsp/AudioServices.h"

#include <utility>
#include <vector>

/** The audio control of the unit while it lives: remembers the zones that were made current and does nothing else. */
class FakeAudioControl : public ACService, public ChipManager
{
public:
    FakeAudioControl() { EngineApi::Provided<ChipManager>::set(this); }
    ~FakeAudioControl() override { EngineApi::Provided<ChipManager>::set(nullptr); }

    std::vector<int> takeZones() { return std::exchange(zones, {}); }

    void setCurrentZone(int zone) override { zones.push_back(zone); }

    bool init(DSPSettingHelper&) override { return true; }
    ACService& getACService() override { return *this; }
    EQService& getEQService() override { std::abort(); } // nobody here asks for it

    // clang-format off
    void toggleMute(bool) override {}
    bool isMute() override { return false; }
    int volumeUp(int, int) override { return 0; }
    int volumeUp(int) override { return 0; }
    int volumeDown(int, int) override { return 0; }
    int volumeDown(int) override { return 0; }
    int setVolume(int, int) override { return 0; }
    void setAlert(bool) override {}
    void setSource(int, int) override {}
    void changeSource(int) override {}
    void zone2OnChanged() override {}
    void zone2OutputModeChanged() override {}
    void zone2VolumeModeChanged() override {}
    void applySourceLevel() override {}
    void setSubwooferDirect(bool) override {}
    void setChannelGains(int, int, int, int) override {}
    int reserved9() override { return 0; }
    int reserved31() override { return 0; }
    void reserved10() override {} void reserved12() override {} void reserved13() override {}
    void reserved14() override {} void reserved15() override {} void reserved16() override {}
    void reserved17() override {} void reserved19() override {} void reserved21() override {}
    void reserved22() override {} void reserved23() override {} void reserved24() override {}
    void reserved25() override {} void reserved26() override {} void reserved27() override {}
    void reserved28() override {} void reserved29() override {} void reserved30() override {}
    void reserved32() override {} void reserved33() override {} void reserved34() override {}
    // clang-format on

private:
    std::vector<int> zones;
};
