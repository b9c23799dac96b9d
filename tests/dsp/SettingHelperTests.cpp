#include "DspFixture.h"
#include "platform/settings/SetupIndex.h"

using namespace Platform;

namespace
{

class SettingHelperTest : public DspFixture
{
};

} // namespace

TEST_F(SettingHelperTest, ReadsVolumesAndNeverStartsLoud)
{
    struct Case
    {
        juce::String content;
        int source, zone2;
    };
    for (const auto& [content, source, zone2] :
         { Case { "[Volume]\nSrc = 20\nZone2=7\n", 20, 7 }, Case { "[Volume]\nSrc=51\nZone2=-1\n", 0, 0 },
           Case { "[Volume]\nSrc=2", 2, 0 }, Case { "[Volume\nSrc=9", 0, 0 }, Case { "Src=9\n", 0, 0 },
           Case { "[Volume]\nSrc=loud\nZone2=99999999999999\n", 0, 0 }, Case { {}, 0, 0 } })
    {
        SCOPED_TRACE(content);
        volumeFile().replaceWithText(content);
        Dsp::DSPSettingHelperImpl fresh;
        EXPECT_EQ(fresh.getVolume(false), source);
        EXPECT_EQ(fresh.getVolume(true), zone2);
    }
}

TEST_F(SettingHelperTest, WritesABurstOfStepsOnceAndForeignKeysStay)
{
    volumeFile().replaceWithText("; the owner's\n[Volume]\nSrc = 3\nOther = 1\n[More]\nKey = text\n");
    {
        Dsp::DSPSettingHelperImpl fresh;
        for (int volume = 4; volume <= 13; ++volume)
            fresh.setVolume(volume, false);
        EXPECT_TRUE(volumeFile().loadFileAsString().contains("Src = 3"));
    } // a write that is due is made at the end
    const auto written = volumeFile().loadFileAsString();
    for (const auto* kept : { "; the owner's", "Other", "Key = text", "Src = 13" })
        EXPECT_TRUE(written.contains(kept)) << kept << " is missing in\n" << written;
    Dsp::DSPSettingHelperImpl again;
    again.setNaviVolume(9);
    again.setPhoneVolume(8);
    Dsp::DSPSettingHelperImpl next;
    EXPECT_EQ(next.getNaviVolume() * 100 + next.getPhoneVolume(), 908);
}

TEST_F(SettingHelperTest, ConvertsSettingsAndLimitsThem)
{
    using Get = int (Dsp::DSPSettingHelper::*)();
    struct Case
    {
        int index, stored;
        Get get;
        int value;
    };
    for (const auto& [index, stored, get, value] :
         { Case { balanceSetting, 0, &Dsp::DSPSettingHelper::getBalance, 12 },
           Case { balanceSetting, 99, &Dsp::DSPSettingHelper::getBalance, 0 },
           Case { faderSetting, 6, &Dsp::DSPSettingHelper::getFader, 6 },
           Case { faderSetting, -5, &Dsp::DSPSettingHelper::getFader, 12 },
           Case { bassSetting, 0, &Dsp::DSPSettingHelper::getBassGain, -6 },
           Case { trebleSetting, 500, &Dsp::DSPSettingHelper::getTrebleGain, 6 },
           Case { band257, 14, &Dsp::DSPSettingHelper::getBandLevel257, 7 },
           Case { band263, -1, &Dsp::DSPSettingHelper::getBandLevel263, -7 },
           Case { lowPassSetting, 3, &Dsp::DSPSettingHelper::getCrossoverFrequency, 120 },
           Case { lowPassSetting, 4, &Dsp::DSPSettingHelper::getCrossoverFrequency, 120 },
           Case { subwooferLevelSetting, 14, &Dsp::DSPSettingHelper::getSubwooferLevelIndex, 13 },
           Case { sourceLevelSetting, 7, &Dsp::DSPSettingHelper::getSourceLevelIndex, 6 },
           Case { presetSetting, 7, &Dsp::DSPSettingHelper::getEqPreset, 7 } })
    {
        set(index, stored);
        EXPECT_EQ((helper().*get)(), value) << index << " = " << stored;
    }
    set(lastBandSetting, 12);
    EXPECT_EQ(helper().getCustomEqGain(6), 6);
    EXPECT_EQ(helper().getCustomEqGain(60), 6);
}
