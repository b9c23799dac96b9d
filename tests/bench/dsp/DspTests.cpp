#include "bench/dsp/DspChip.h"
#include "bench/dsp/DspModel.h"
#include "bench/dsp/DspPlayer.h"
#include "bench/mcu/McuFrame.h"

#include <cmath>
#include <gmock/gmock.h>
#include <juce_audio_formats/juce_audio_formats.h>
#include <numbers>

namespace
{

using namespace Bench;
using testing::HasSubstr;
using Words24 = std::vector<std::uint32_t>;

constexpr std::uint32_t one = 0x200000; ///< a gain of 1

/** A chip that is fed with blocks, and what it told. */
class DspBlocks : public testing::Test
{
protected:
    std::vector<std::string> told;
    DspChip chip { [this](const char*, const std::string& text) { told.push_back(text); } };

    void feed(Bytes block) { chip.block(block); }
    void setRegister(int number, int value)
    {
        feed({ 0xC0, 0, static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(value) });
    }

    void write(std::size_t bank, std::size_t address, const Words24& words)
    {
        Bytes block { static_cast<std::uint8_t>(0x80 + words.size() - 1), static_cast<std::uint8_t>(address >> 8),
                      static_cast<std::uint8_t>(address & 0xFF) };
        for (const auto word : words)
            for (const int shift : { 16, 8, 0 })
                block.push_back(static_cast<std::uint8_t>(word >> shift & 0xFF));
        feed(block);
        feed({ static_cast<std::uint8_t>(0xA4 + bank), 0, 0 });
    }

    void wakeAndRun()
    {
        feed({ 0xDE, 0xAD, 0xDA, 0x7A });
        setRegister(0x85, 0x1F);
    }

    /** Runs, listens to the system audio, every gain is 1 and every filter off. */
    void makeFlat()
    {
        wakeAndRun();
        for (const auto input : { 0x37, 0x38, 0x39 })
            setRegister(input, 0x01);
        for (const auto& parameter : dspParameters())
            if (parameter.kind == DspKind::gain)
                write(parameter.bank, parameter.address, { one });
            else if (parameter.kind == DspKind::filter || parameter.words == 10)
                write(parameter.bank, parameter.address, { 0, 0, 0, 0, 0, 0, 0, 0, 0x400000, 0 });
            else if (parameter.kind == DspKind::band)
                write(parameter.bank, parameter.address, { 0, 0, 0, 0, 0x400000 });
    }

    DspOutput output(const std::string& name) const
    {
        for (const auto& each : outputsOf(chip.memory()))
            if (each.name == name)
                return each;
        ADD_FAILURE() << name;
        return {};
    }
};

TEST_F(DspBlocks, refusesBlocksWithoutAMeaning)
{
    wakeAndRun();
    const auto before = chip.memory();
    const Bytes wrong[] = { {},
                            { 0xC0, 0 },
                            { 0xC0, 0, 1 },
                            { 0xC0, 1, 0, 7 },             // no such register
                            { 0x80, 0, 5, 1, 2 },          // half a word
                            { 0x81, 0, 5, 1, 2, 3 },       // a word is missing
                            { 0x80, 0xFF, 0xFF, 1, 2, 3 }, // no such address
                            { 0xA5, 0, 0 },                // nothing waits
                            { 0xA6, 0, 0 },
                            { 0xB4, 0xFF, 0xFF, 1, 2, 3 },
                            { 0xB4, 0, 0, 1, 2 },
                            { 0x12, 0, 0 } };
    for (const auto& block : wrong)
        feed(block);
    EXPECT_EQ(chip.counters().malformed, std::size(wrong));
    EXPECT_EQ(chip.memory().banks, before.banks);
    EXPECT_EQ(chip.memory().registers, before.registers);
}

TEST(DspModel, decodesFixedPoint)
{
    struct Case
    {
        std::uint32_t word;
        double gain;
    };
    for (const auto& each : { Case { 0x200000, 1 }, Case { 0x7FFFFF, 4 - 1.0 / 2097152 }, Case { 0x800000, -4 },
                              Case { 0xFFFFFF, -1.0 / 2097152 }, Case { 0, 0 } })
        EXPECT_DOUBLE_EQ(gainOfWord(each.word), each.gain) << each.word;

    // Single: b2 b1 -a2 -a1 b0 with one integer bit.
    EXPECT_EQ(biquadOfWords(Words24 { 0x200000, 0xC00000, 0xE00000, 0x600000, 0x400000 }),
              (Biquad { 1, -1, 0.5, -1.5, 0.5 }));
    // Double: 1.0 is 0x4000 and nothing; -1.0 is 0xC000; a half step of the integer part is in the second word.
    EXPECT_EQ(biquadOfWords(Words24 { 0x400000, 0, 0xC00000, 0, 0, 0x400000, 0xFFFF00, 0x400000, 0x7FFF00, 0x400000 }),
              (Biquad { 2 - std::ldexp(0.5, -14), -1, 1, std::ldexp(0.5, -14), -std::ldexp(0.5, -14) }));
}

/** Words of a filter in double precision, made with whole numbers only so far as the format needs it. */
Words24 doubleWords(const std::vector<double>& values)
{
    Words24 words;
    for (const auto value : values)
    {
        const auto scaled = static_cast<std::int64_t>(std::llround(std::ldexp(value, 14 + 23)));
        words.push_back(static_cast<std::uint32_t>((scaled >> 23 & 0xFFFF) << 8));
        words.push_back(static_cast<std::uint32_t>(scaled & 0x7FFFFF));
    }
    return words;
}

TEST_F(DspBlocks, everyParameterActsOnOneKindOfOutput)
{
    makeFlat();
    // Silencing one word at a time silences those outputs that it lies before, and no other.
    const std::map<std::string, std::size_t> affected {
        { "speaker source left", 2 }, { "speaker volume", 5 }, { "subwoofer level", 1 }, { "front right", 1 },
        { "zone source right", 2 },   { "output A", 2 },       { "output A level", 2 },  { "output B left", 1 },
        { "line volume", 4 },         { "line rear left", 1 }, { "output B", 2 }
    };
    for (const auto& parameter : dspParameters())
    {
        const auto expected = affected.find(parameter.name);
        if (expected == affected.end())
            continue;
        write(parameter.bank, parameter.address, { 0 });
        EXPECT_EQ(std::ranges::count_if(outputsOf(chip.memory()), &DspOutput::isSilent), expected->second)
            << parameter.name;
        write(parameter.bank, parameter.address, { one });
    }
    EXPECT_EQ(output("subwoofer").gainDb(100), 0) << "both channels mixed";
    for (const auto& parameter : dspParameters())
        EXPECT_FALSE(parameterText(chip.memory(), parameter).empty());
}

TEST_F(DspBlocks, filtersAsItsResponseSays)
{
    makeFlat();
    const double w = 2 * std::numbers::pi * 120 / 48000, alpha = std::sin(w) / 1.6, a0 = 1 + alpha;
    const auto b = (1 - std::cos(w)) / 2 / a0;
    write(1, 0x1A6, doubleWords({ b, 2 * b, -(1 - alpha) / a0, 2 * std::cos(w) / a0, b }));
    EXPECT_THAT(told.back(), HasSubstr("low-pass 120 Hz"));
    DspPlayer player({ output("output A left") });
    std::vector<double> tone(48000);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = std::sin(2 * std::numbers::pi * 1000 * static_cast<double>(i) / 48000);
    std::vector<std::vector<double>> result;
    player.process(tone, tone, result);
    const auto settled = std::span(result[0]).last(4800);
    EXPECT_NEAR(decibels(std::ranges::max(settled)), output("output A left").gainDb(1000), 0.05);
}

/** Sound through the chip, from file to file. */
class DspSound : public DspBlocks
{
protected:
    static constexpr int frames = 9600;
    const juce::File in = juce::File::createTempFile(".wav");
    const juce::File out = juce::File::createTempFile(".wav");

    ~DspSound() override
    {
        in.deleteFile();
        out.deleteFile();
    }

    /** 1 kHz at a half of full scale on the left, a quarter on the right. */
    void makeTone(int rate = 48000, int length = frames) const
    {
        juce::AudioBuffer<float> tone(2, length);
        for (int i = 0; i < length; ++i)
        {
            const auto sine = static_cast<float>(std::sin(2 * std::numbers::pi * 1000 * i / rate));
            tone.setSample(0, i, sine / 2);
            tone.setSample(1, i, sine / 4);
        }
        std::unique_ptr<juce::AudioFormatWriter> writer(juce::WavAudioFormat().createWriterFor(
            in.createOutputStream().release(), rate, 2, 24, juce::StringPairArray(), 0));
        ASSERT_TRUE(writer->writeFromAudioSampleBuffer(tone, 0, length));
    }
    juce::AudioBuffer<float> soundOfFile() const
    {
        std::unique_ptr<juce::AudioFormatReader> reader(
            juce::WavAudioFormat().createReaderFor(out.createInputStream().release(), true));
        juce::AudioBuffer<float> sound(static_cast<int>(reader->numChannels),
                                       static_cast<int>(reader->lengthInSamples));
        EXPECT_EQ(reader->lengthInSamples, frames);
        reader->read(sound.getArrayOfWritePointers(), sound.getNumChannels(), 0, sound.getNumSamples());
        return sound;
    }
    std::vector<float> peaksOfFile() const
    {
        const auto sound = soundOfFile();
        std::vector<float> peaks;
        for (int channel = 0; channel < sound.getNumChannels(); ++channel)
            peaks.push_back(sound.getMagnitude(channel, 0, sound.getNumSamples()));
        return peaks;
    }
};

TEST_F(DspSound, runsThroughAFlatChainWithItsGains)
{
    makeFlat();
    makeTone();
    write(1, 0x05, { one / 2 });  // speaker volume
    write(1, 0xD9, { one / 2 });  // front right
    write(0, 0x27, { 0x7FFFFF }); // line volume: nearly 4 times, beyond full scale
    const auto played =
        playFile(chip.memory(), in.getFullPathName().toStdString(), out.getFullPathName().toStdString(), {});
    ASSERT_EQ(played.error, "");
    EXPECT_GT(played.clipped, 0u);
    const auto peaks = peaksOfFile();
    const float expected[] = { 0.25f, 0.0625f, 0.25f, 0.125f, 1, 1, 1, 1, 0.5f, 0.25f, 0.5f, 0.25f, 0.1875f };
    ASSERT_EQ(peaks.size(), std::size(expected));
    for (std::size_t i = 0; i < peaks.size(); ++i)
        EXPECT_NEAR(peaks[i], expected[i], 1e-5) << dspOutputs[i].name;
}

/** A file of another rate lasts as long as before and begins when it did, with the tone that it had. */
TEST_F(DspSound, keepsToneAndTimeOfAnyRate)
{
    constexpr double halfASample = std::numbers::pi / 96; // where the tone is steepest
    makeFlat();
    for (const int rate : { 44100, 22050, 96000 })
    {
        makeTone(rate, rate / 5);
        const auto played =
            playFile(chip.memory(), in.getFullPathName().toStdString(), out.getFullPathName().toStdString(), "front");
        ASSERT_EQ(played.error, "") << rate;
        const auto sound = soundOfFile();
        for (int i = frames / 4; i < frames * 3 / 4; ++i)
            ASSERT_NEAR(sound.getSample(0, i), std::sin(2 * std::numbers::pi * i / 48) / 2, halfASample) << rate;
        juce::FileOutputStream(in).truncate();
    }
}

} // namespace
