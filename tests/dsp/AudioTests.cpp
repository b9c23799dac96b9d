// Audio control and equaliser, by what arrives at the DSP and at the listener.
#include "DspFixture.h"
#include "dsp/akm/VolumeTable.h"
#include "dsp/akm/ak773ChipManager.h"
#include "platform/base/Logger.h"
#include "platform/settings/SetupIndex.h"
#include "support/Golden.h"

#include <atomic>
#include <thread>

using namespace Platform;
using namespace Dsp;

namespace
{

class Notices : public Dsp::CDSPStateListener
{
public:
    void onVolumeChanged(int volume, int zone, bool show) override
    {
        text << "volume " << volume << " zone " << zone << (show ? " shown; " : "; ");
    }
    void onSecondNotice(int, int) override {}
    void onMuteChanged(bool mute) override
    {
        text << (mute ? "mute; " : "unmute; ");
        lastMute = mute;
    }
    void onFourthNotice(int) override {}

    juce::String take() { return std::exchange(text, {}); }

    std::atomic<bool> lastMute { false };

private:
    juce::String text;
};

class AudioTest : public DspFixture
{
protected:
    AudioTest() { helper().setListener(&notices); }

    void start() { ASSERT_TRUE(manager().init(helper())); }
    static ak773ChipManager& manager() { return *ak773ChipManager::getInstance(); }
    static Dsp::ACService& audio() { return manager().getACService(); }
    static Dsp::EQService& eq() { return manager().getEQService(); }
    /** As if the time of a source change were over. */
    static void fire(int timer) { dynamic_cast<ak7738ACOperator&>(audio()).timerCallback(timer); }

    /** The blocks as text, a write and the order that takes it over in one line. */
    static juce::String transcript()
    {
        juce::String text;
        const auto blocks = takeBlocks();
        for (std::size_t i = 0; i < blocks.size(); ++i)
        {
            const auto& block = blocks[i];
            const auto hex = [&](std::size_t from, std::size_t count)
            { return hexPairs(block.data() + from, static_cast<int>(count)); };
            if (block.size() > 100)
                text << "image " << hex(0, 3) << ", " << static_cast<int>(block.size()) << " bytes\n";
            else if (block[0] >= 0x80 && block[0] < 0x90 && i + 1 < blocks.size())
                text << (blocks[++i][0] == 0xA5 ? "bank 1 " : "bank 0 ") << hex(1, 2) << " = "
                     << hex(3, block.size() - 3) << "\n";
            else
                text << hex(0, block.size()) << "\n";
        }
        return text;
    }

    /** The last words that each place got. */
    static std::map<juce::String, juce::String> memory()
    {
        std::map<juce::String, juce::String> places;
        for (const auto& line : juce::StringArray::fromLines(transcript()))
            if (line.startsWith("bank"))
                places[line.upToFirstOccurrenceOf(" =", false, false)] = line.fromFirstOccurrenceOf("= ", false, false);
        return places;
    }

    static juce::String gain(double decibels)
    {
        const auto word = gainWord(decibels);
        return hexPairs(word.data(), 3);
    }

    Notices notices;
};

} // namespace

TEST_F(AudioTest, WritesWhatItAlwaysWrote)
{
    helper().setVolume(20, false);
    helper().setVolume(15, true);
    set(zone2OnSetting, 1);
    set(presetSetting, 1);
    ak7738Operator::getInstance()->boot();
    const auto boot = transcript();
    expectGolden("dsp/golden/boot.txt", boot);
    start();
    const auto init = transcript();
    EXPECT_TRUE(init.startsWith(boot));
    expectGolden("dsp/golden/init.txt", init.substring(boot.length()));
    start();
    EXPECT_TRUE(init.endsWith(transcript())) << "when the microcontroller restarts, only the equaliser is written anew";
    set(presetSetting, 3);
    eq().applyPreset();
    expectGolden("dsp/golden/preset.txt", transcript());
    audio().changeSource(Dsp::eAudioAux1);
    juce::String change = transcript();
    fire(ak7738ACOperator::compensationTimer);
    fire(ak7738ACOperator::restoreTimer);
    expectGolden("dsp/golden/source-change.txt", change + "later\n" + transcript());
    audio().toggleMute(true);
    expectGolden("dsp/golden/mute.txt", transcript());
    audio().volumeUp(1, 2);
    expectGolden("dsp/golden/zone2-step.txt", transcript());
}

TEST_F(AudioTest, StepsMoveTheZonesAndTellTheListener)
{
    start();
    struct Case
    {
        const char* name;
        int zone2On, volumeMode;
        int zone, steps;
        const char* told;
        int main, zone2;
    };
    for (const auto& [name, zone2On, volumeMode, zone, steps, told, main, zone2] :
         { Case { "zone 2 off mirrors", 0, 1, 1, 2, "volume 12 zone 1 shown; volume 12 zone 2; ", 12, 12 },
           Case { "zone 2 on stays", 1, 1, 1, 2, "volume 12 zone 1 shown; ", 12, 40 },
           Case { "zone 2 follows", 1, 0, 1, 15, "volume 25 zone 1 shown; volume 50 zone 2; ", 25, 50 },
           Case { "zone 2 alone", 1, 1, 2, -50, "volume 0 zone 2 shown; ", 10, 0 },
           Case { "nothing to move", 1, 1, 1, 0, "", 10, 40 },
           Case { "far down", 1, 1, 1, -2'000'000'000, "volume 0 zone 1 shown; ", 0, 40 },
           Case { "no such zone", 1, 1, 3, 1, "", 10, 40 } })
    {
        SCOPED_TRACE(name);
        helper().setVolume(10, false);
        helper().setVolume(40, true);
        set(zone2OnSetting, zone2On);
        set(zone2VolumeSetting, volumeMode);
        audio().zone2OnChanged();
        audio().zone2VolumeModeChanged();
        notices.take();
        EXPECT_EQ(steps < 0 ? audio().volumeDown(-steps, zone) : audio().volumeUp(steps, zone), zone == 3 ? -1 : 0);
        EXPECT_EQ(notices.take(), told);
        EXPECT_EQ(helper().getVolume(false), main);
        EXPECT_EQ(helper().getVolume(true), zone2);
    }
    EXPECT_EQ(audio().setVolume(20, 0), 0);
    EXPECT_EQ(audio().setVolume(20, 3), -1);
    EXPECT_EQ(audio().setVolume(200, 1), 0);
    EXPECT_EQ(helper().getVolume(false), 50);
    helper().setVolume(10, false);
    helper().setVolume(5, true);
    set(zone2OnSetting, 1);
    set(zone2VolumeSetting, 0);
    audio().zone2OnChanged();
    audio().zone2VolumeModeChanged();
    audio().setVolume(200, 1);
    EXPECT_EQ(helper().getVolume(true), 50) << "zone 2 follows the whole step";
    audio().toggleMute(true);
    notices.take();
    audio().volumeUp(1, 1);
    EXPECT_EQ(notices.take(), "unmute; ") << "a step that cannot move still ends the mute";
}

TEST_F(AudioTest, OutputsFollowTheZonesThatTheyBelongTo)
{
    helper().setVolume(50, false);
    helper().setVolume(0, true);
    set(zone2OnSetting, 1);
    start();
    const auto a = [](bool main) { return gain(main ? 6 + 2.5 : -144); };
    const auto b = [](bool main) { return gain(main ? 11 : -144); };
    struct Case
    {
        int mode;
        bool direct, aIsMain, bIsMain;
    };
    for (const auto& [mode, direct, aIsMain, bIsMain] :
         { Case { 0, false, false, true }, Case { 1, false, true, false }, Case { 2, false, false, false },
           Case { 0, true, true, false } })
    {
        set(zone2OutputSetting, mode);
        audio().setSubwooferDirect(direct);
        memory();
        audio().zone2OutputModeChanged();
        auto written = memory();
        EXPECT_EQ(written["bank 1 01 B0"], a(aIsMain)) << mode << direct;
        EXPECT_EQ(written["bank 1 01 8E"], b(bIsMain)) << mode << direct;
    }
}

TEST_F(AudioTest, TheAlertIsHeardOverEverySource)
{
    start();
    transcript();
    const juce::String system = "C0 00 37 01\nC0 00 38 01\nC0 00 39 01\n";
    const juce::String tuner = "C0 00 37 1A\nC0 00 38 1A\nC0 00 39 1A\nC0 00 66 11\n";
    audio().setSource(24, Dsp::eAudioFM);
    audio().setAlert(true);
    EXPECT_EQ(transcript(), system);
    fire(ak7738ACOperator::restoreTimer);
    EXPECT_FALSE(transcript().contains("C0 00 37")) << "the source must not take the alert's input";
    audio().setAlert(false);
    EXPECT_EQ(transcript(), tuner);
    audio().setSource(24, Dsp::eAudioPandora);
    audio().setAlert(true);
    EXPECT_EQ(transcript(), "") << "the source comes in where the alert does";
    fire(ak7738ACOperator::restoreTimer);
    EXPECT_TRUE(transcript().startsWith(system)) << "neither would be heard on the input of the source before";
    audio().setAlert(false);
    EXPECT_EQ(transcript(), "");
    audio().setSource(24, Dsp::eAudioTuner);
    fire(ak7738ACOperator::restoreTimer);
    EXPECT_TRUE(transcript().startsWith("C0 00 37 FF\nC0 00 38 FF\nC0 00 39 FF\nbank")) << "an unknown input is none";
}

/** The supply is low and a person turns the balance while the DSP is still off. */
TEST_F(AudioTest, WhatWasAskedForBeforeTheDspIsUpComesWithIt)
{
    audio().changeSource(Dsp::eAudioFM);
    audio().setAlert(true);
    set(balanceSetting, 0);
    eq().applyBalance();
    EXPECT_EQ(transcript(), "");
    start();
    const auto all = transcript();
    EXPECT_TRUE(all.contains("C0 00 37 01\nC0 00 38 01\nC0 00 39 01\n"));
    EXPECT_TRUE(all.contains("bank 0 00 BB = " + gain(-144))) << "only the left is heard";
    fire(ak7738ACOperator::restoreTimer);
    audio().setAlert(false);
    EXPECT_TRUE(transcript().endsWith("C0 00 37 1A\nC0 00 38 1A\nC0 00 39 1A\nC0 00 66 11\n"));
}

TEST_F(AudioTest, TheEqualiserNeverAddsUp)
{
    start();
    memory();
    set(presetSetting, 2);
    eq().applyPreset();
    const auto plain = memory();
    for (int times = 0; times < 3; ++times)
    {
        eq().setDmeState(true);
        eq().applyPreset();
        eq().setDmeState(false);
    }
    auto last = memory();
    for (const auto& [place, words] : plain)
        EXPECT_EQ(last[place], words) << place;
    set(subwooferSetting, 1);
    eq().updateSubwoofer();
    memory();
    eq().applyPreset();
    EXPECT_EQ(memory().count("bank 1 01 16"), 0u) << "with the subwoofer group 3 stays flat";
    set(presetSetting, 5);
    eq().applyPreset();
    set(presetSetting, 1);
    eq().setCustomBand(3, 12);
    EXPECT_EQ(transcript(), "") << "no such preset; not the user's curve";
    set(balanceSetting, 0);
    eq().applyBalance();
    EXPECT_EQ(memory()["bank 0 00 BB"], gain(-144));
}

/** A rotary is turned while two others press mute: whoever comes last, the DSP, the store and the displays agree. */
TEST_F(AudioTest, StateAndDspStayTogetherUnderManyThreads)
{
    start();
    memory();
    std::vector<std::thread> hands;
    for (int hand = 0; hand < 4; ++hand)
        hands.emplace_back(
            [hand]
            {
                for (int i = 0; i < 50; ++i)
                    if (hand < 2)
                        audio().toggleMute(true);
                    else
                        audio().volumeUp(hand == 2 ? 3 : -2, 1);
            });
    for (auto& hand : hands)
        hand.join();
    auto written = memory();
    EXPECT_EQ(written["bank 1 00 05"], gain(volumeLevel(volumeTableA, helper().getVolume(false))));
    EXPECT_EQ(written["bank 0 00 27"], gain(volumeLevel(volumeTableB, helper().getVolume(false))));
    for (const auto* place : { "bank 1 00 02", "bank 1 00 E7", "bank 0 00 02" })
        EXPECT_EQ(written[place], audio().isMute() ? "01 00 00" : "00 00 00") << place;
    EXPECT_EQ(notices.lastMute, audio().isMute());
}
