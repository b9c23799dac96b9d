#include "BusClient.h"
#include "bench/WireValues.h"
#include "bench/dsp/Dsp.h"
#include "bench/dsp/DspModel.h"
#include "bench/dsp/DspPlayer.h"
#include "bench/dsp/DspPlot.h"

#include <cmath>
#include <complex>
#include <filesystem>
#include <gmock/gmock.h>
#include <juce_audio_formats/juce_audio_formats.h>
#include <juce_graphics/juce_graphics.h>
#include <numbers>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using Words24 = std::vector<std::uint32_t>;

constexpr std::uint32_t one = 0x200000; ///< a gain of 1

/** A chip that is fed with blocks, and what it told. */
class DspBlocks : public testing::Test
{
protected:
    std::vector<std::string> told, details;
    DspChip chip { [this](const char* stream, const std::string& text)
                   { (std::string(stream) == "dsp" ? told : details).push_back(text); } };

    void feed(Bytes block) { chip.block(block); }
    void setRegister(int number, int value)
    {
        feed({ 0xC0, 0, static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(value) });
    }

    void sendWords(std::size_t address, const Words24& words)
    {
        Bytes block { static_cast<std::uint8_t>(0x80 + words.size() - 1), static_cast<std::uint8_t>(address >> 8),
                      static_cast<std::uint8_t>(address & 0xFF) };
        for (const auto word : words)
            for (const int shift : { 16, 8, 0 })
                block.push_back(static_cast<std::uint8_t>(word >> shift & 0xFF));
        feed(block);
    }
    void write(std::size_t bank, std::size_t address, const Words24& words)
    {
        sendWords(address, words);
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

// A word goes where the commit block behind it says, and only then; one that comes again changes nothing more.
TEST_F(DspBlocks, wordsWaitForTheirCore)
{
    wakeAndRun();
    sendWords(0x05, { one });
    EXPECT_EQ(chip.memory().word(1, 0x05), 0u);
    feed({ 0xA5, 0, 0 });
    EXPECT_EQ(chip.memory().word(1, 0x05), one);
    EXPECT_EQ(chip.memory().word(0, 0x05), 0u);
    write(0, 0xC1, { 0x100000 });
    EXPECT_EQ(chip.memory().word(0, 0xC1), 0x100000u);
    write(1, 0x00, { one, 0x400000 });
    feed({ 0xA5, 0, 0 }); // its CRC did not match the first time
    EXPECT_EQ(chip.memory().word(1, 0x01), 0x400000u);
    EXPECT_THAT(told, testing::IsSupersetOf({ "speaker volume 0.0 dB", "line front right -6.0 dB",
                                              "speaker source left 0.0 dB", "speaker source right 6.0 dB" }));
    EXPECT_EQ(std::ranges::count(told, "speaker source right 6.0 dB"), 1);
}

TEST_F(DspBlocks, bootsAndTellsTheSource)
{
    setRegister(0x37, 0x1A);
    EXPECT_EQ(chip.memory().registers[0x37], 0) << "asleep";
    feed({ 0xDE, 0xAD, 0xDA, 0x7A });
    chip.readCrc(true);
    Bytes image(600, 0);
    image[0] = 0xB4;
    image[3] = 0x12;
    feed(image);
    chip.readCrc(false);
    feed(image); // written again, as the CRC was wrong
    chip.readCrc(true);
    EXPECT_EQ(chip.memory().word(0, 0), 0x120000u);
    setRegister(0x85, 0x1F);
    for (const auto input : { 0x37, 0x38, 0x39 })
        setRegister(input, 0x1A);
    setRegister(0x66, 0x12);
    for (const auto& [bank, address] : { std::pair(1, 2), std::pair(1, 231), std::pair(0, 2) })
        write(static_cast<std::size_t>(bank), static_cast<std::size_t>(address), { 0x010000 });
    write(1, 2, { 0 });
    EXPECT_THAT(told,
                testing::ElementsAre(HasSubstr("asleep"), "awake",
                                     "boot: 2 of 3 blocks verified; coefficients 1 600 bytes", "register 37=1a",
                                     "register 38=1a", "register 39=1a", "register 66=12", "source aux", "mute on"));
}

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

// A +6 dB peak at 50 Hz with Q 1.5, by the cookbook, lies on the analogue peak that it was made from: near its centre
// closely, and its nominal curve everywhere.
TEST_F(DspBlocks, peaksLieOnTheAnalogueCurve)
{
    makeFlat();
    const double w = 2 * std::numbers::pi * 50 / 48000, a = std::pow(10, 6.0 / 40), alpha = std::sin(w) / 3;
    const auto a0 = 1 + alpha / a;
    write(1, bandAddress(0, 1),
          doubleWords({ (1 - alpha * a) / a0, -2 * std::cos(w) / a0, -(1 - alpha / a) / a0, 2 * std::cos(w) / a0,
                        (1 + alpha * a) / a0 }));
    const auto group = groupOf(chip.memory(), 0);
    EXPECT_NEAR(group.bandDb(1), 6, 1e-4);
    for (const double hz : { 20.0, 35.0, 50.0, 80.0, 200.0, 2000.0 })
    {
        const std::complex<double> s(0, hz / 50);
        const auto analogue = 20 * std::log10(std::abs((s * s + s * (a / 1.5) + 1.0) / (s * s + s / (a * 1.5) + 1.0)));
        EXPECT_NEAR(group.nominalDb(hz), analogue, 1e-3) << hz;
        EXPECT_NEAR(group.gainDb(hz), analogue, 0.01) << hz;
        EXPECT_NEAR(output("front left").gainDb(hz), analogue, 0.01) << hz;
        EXPECT_NEAR(output("line front left").gainDb(hz), 0, 1e-9) << "the other equaliser is flat";
    }
    write(1, 0x4A, { 0x100000 });
    EXPECT_NEAR(output("front left").gainDb(50), 0, 1e-9) << "switched out of the path";
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

/** The chip behind its socket, as the unit's driver sees it. */
class DspBus : public testing::Test
{
protected:
    Journal journal;
    std::filesystem::path folder;
    Dsp dsp { journal };

    void SetUp() override
    {
        auto pattern = (std::filesystem::temp_directory_path() / "bench-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        ASSERT_EQ(dsp.start(path()), "");
    }
    void TearDown() override
    {
        dsp.stop();
        std::filesystem::remove_all(folder);
    }

    std::string path() const { return (folder / "spi2").string(); }

    static int request(const BusClient& bus, std::uint32_t code, const Bytes& input, Bytes* answer = nullptr)
    {
        Bytes packet;
        appendValue(packet, code);
        packet.insert(packet.end(), input.begin(), input.end());
        const auto reply = bus.ask(packet);
        if (reply.size() < 4)
            return -2;
        if (answer != nullptr)
            answer->assign(reply.begin() + 4, reply.end());
        return valueAt<std::int32_t>(reply, 0);
    }
    static int select(const BusClient& bus, bool on)
    {
        return request(bus, 0x1B0024, { on ? Bytes { 0, 0, 0, 0 } : Bytes { 1, 0, 0, 0 } });
    }
    static int configure(const BusClient& bus, std::uint32_t clock = 1000000)
    {
        Bytes record;
        for (const std::uint32_t value : { clock, 8u, 10u, 100u, 0u, 0u, 1u, 1u, 1u, 0u })
            appendValue(record, value);
        return request(bus, 0x1B0004, record);
    }
    static int write(const BusClient& bus, Bytes data)
    {
        data.insert(data.begin(), 0);
        return request(bus, 0x1B000C, data);
    }
    static Bytes readCrc(const BusClient& bus)
    {
        Bytes answer;
        select(bus, true);
        EXPECT_EQ(request(bus, 0x1B0010, { 3, 0x00, 0x00, 0x72, 2, 0, 0, 0 }, &answer), 0);
        select(bus, false);
        return answer;
    }
};

TEST_F(DspBus, answersTheCrcOfTheWholeBlock)
{
    const BusClient bus(path()), other(path());
    EXPECT_NE(configure(bus, 999), 0);
    EXPECT_EQ(configure(bus), 0);
    EXPECT_NE(write(bus, { 1 }), 0) << "not selected";
    ASSERT_EQ(select(bus, true), 0);
    EXPECT_NE(select(other, true), 0) << "one select line";
    EXPECT_NE(write(bus, Bytes(124, 0)), 0) << "longer than a transfer";
    // The check value of CRC-16/XMODEM, in two transfers.
    EXPECT_EQ(write(bus, { '1', '2', '3', '4' }), 0);
    EXPECT_EQ(write(bus, { '5', '6', '7', '8', '9' }), 0);
    EXPECT_EQ(select(bus, false), 0);
    EXPECT_THAT(readCrc(bus), ElementsAre(0x31, 0xC3));

    dsp.answerCrc(Dsp::Crc::wrongOnce);
    EXPECT_NE(readCrc(bus), (Bytes { 0x31, 0xC3 }));
    EXPECT_THAT(readCrc(bus), ElementsAre(0x31, 0xC3));
    dsp.answerCrc(Dsp::Crc::wrongAlways);
    for (int i = 0; i < 3; ++i)
        EXPECT_NE(readCrc(bus), (Bytes { 0x31, 0xC3 }));
    const auto state = dsp.state();
    EXPECT_EQ(state.counters.blocks, 1u);
    EXPECT_EQ(state.counters.bytes, 9u);
    EXPECT_EQ(state.counters.crcReads, 6u);
    EXPECT_EQ(state.counters.verified, 1u);
    EXPECT_EQ(state.refused, 4u);
}

TEST_F(DspBus, failsAsToldAndRecovers)
{
    {
        const BusClient bus(path());
        dsp.failConfigure(true);
        EXPECT_NE(configure(bus), 0);
        dsp.failTransfers(2);
        select(bus, true);
        EXPECT_NE(write(bus, { 1 }), 0);
        EXPECT_NE(write(bus, { 1 }), 0);
        EXPECT_EQ(write(bus, { 1 }), 0) << "a driver that was not configured goes on";
        dsp.slowBy(60ms);
        const auto start = Clock::now();
        EXPECT_EQ(write(bus, { 1 }), 0);
        EXPECT_GE(Clock::now() - start, 60ms);
        dsp.setGone(true);
        EXPECT_EQ(select(bus, false), -2) << "the connection is gone";
        EXPECT_EQ(dsp.refuseOpen(true), "");
        EXPECT_FALSE(BusClient(path()).isConnected());
    }
    EXPECT_THAT(dsp.state().faults, HasSubstr("cannot be opened"));
    EXPECT_EQ(dsp.clearFaults(), "");
    EXPECT_EQ(dsp.state().faults, "");
    const BusClient bus(path());
    ASSERT_TRUE(bus.isConnected());
    EXPECT_EQ(configure(bus), 0);
    EXPECT_EQ(select(bus, true), 0) << "the connection that held the line is gone";
}

/** Sound through the chip, from file to file. */
class DspSound : public DspBlocks
{
protected:
    const juce::File in = juce::File::createTempFile(".wav");
    const juce::File out = juce::File::createTempFile(".wav");

    ~DspSound() override
    {
        in.deleteFile();
        out.deleteFile();
    }

    void makeTone(double rate, int channels) const
    {
        constexpr int frames = 9600;
        juce::AudioBuffer<float> tone(channels, frames);
        for (int channel = 0; channel < channels; ++channel)
            for (int i = 0; i < frames; ++i)
                tone.setSample(
                    channel, i,
                    static_cast<float>((channel == 0 ? 0.5 : 0.25) * std::sin(2 * std::numbers::pi * 1000 * i / rate)));
        in.deleteFile();
        std::unique_ptr<juce::AudioFormatWriter> writer(juce::WavAudioFormat().createWriterFor(
            in.createOutputStream().release(), rate, static_cast<unsigned>(channels), 24, juce::StringPairArray(), 0));
        ASSERT_TRUE(writer->writeFromAudioSampleBuffer(tone, 0, frames));
    }
    Played play(const std::string& selection = {}) const
    {
        return playFile(chip.memory(), in.getFullPathName().toStdString(), out.getFullPathName().toStdString(),
                        selection);
    }
    std::vector<float> peaksOfFile() const
    {
        std::unique_ptr<juce::AudioFormatReader> reader(
            juce::WavAudioFormat().createReaderFor(out.createInputStream().release(), true));
        juce::AudioBuffer<float> sound(static_cast<int>(reader->numChannels),
                                       static_cast<int>(reader->lengthInSamples));
        EXPECT_EQ(reader->lengthInSamples, 9600);
        reader->read(sound.getArrayOfWritePointers(), sound.getNumChannels(), 0, sound.getNumSamples());
        std::vector<float> peaks;
        for (int channel = 0; channel < sound.getNumChannels(); ++channel)
            peaks.push_back(sound.getMagnitude(channel, 0, sound.getNumSamples()));
        return peaks;
    }
};

TEST_F(DspSound, runsThroughAFlatChainWithItsGains)
{
    makeFlat();
    makeTone(48000, 2);
    write(1, 0x05, { one / 2 });  // speaker volume
    write(1, 0xDF, { one / 2 });  // front right
    write(0, 0x27, { 0x7FFFFF }); // line volume: nearly 4 times, beyond full scale
    const auto played = play();
    ASSERT_EQ(played.error, "");
    EXPECT_GT(played.clipped, 0u);
    const auto peaks = peaksOfFile();
    const float expected[] = { 0.25f, 0.0625f, 0.25f, 0.125f, 1, 1, 1, 1, 0.5f, 0.25f, 0.5f, 0.25f, 0.1875f };
    ASSERT_EQ(peaks.size(), std::size(expected));
    for (std::size_t i = 0; i < peaks.size(); ++i)
        EXPECT_NEAR(peaks[i], expected[i], 1e-5) << dspOutputs[i].name;
    ASSERT_EQ(play("front").error, "");
    EXPECT_EQ(peaksOfFile().size(), 2u);
}

TEST_F(DspSound, isSilentWhenMutedOrWithoutInput)
{
    makeFlat();
    makeTone(48000, 1);
    write(1, 2, { 0x010000 });
    setRegister(0x38, 0x00);
    ASSERT_EQ(play().error, "");
    const auto peaks = peaksOfFile();
    for (std::size_t i = 0; i < peaks.size(); ++i)
        EXPECT_EQ(peaks[i] > 0, dspOutputs[i].path == zonePath) << dspOutputs[i].name;
}

TEST_F(DspSound, refusesWhatItCannotPlay)
{
    makeFlat();
    makeTone(44100, 2);
    EXPECT_THAT(play().error, HasSubstr("44100"));
    makeTone(48000, 3);
    EXPECT_NE(play().error, "");
    makeTone(48000, 2);
    EXPECT_NE(play("rear ceiling").error, "");
    in.replaceWithText("no sound");
    EXPECT_NE(play().error, "");
    EXPECT_FALSE(out.existsAsFile());
}

TEST_F(DspSound, filtersAsItsResponseSays)
{
    makeFlat();
    makeTone(48000, 2);
    const double w = 2 * std::numbers::pi * 120 / 48000, alpha = std::sin(w) / 1.6, a0 = 1 + alpha;
    const auto b = (1 - std::cos(w)) / 2 / a0;
    write(1, 0x1A6, doubleWords({ b, 2 * b, -(1 - alpha) / a0, 2 * std::cos(w) / a0, b }));
    EXPECT_THAT(details.back(), HasSubstr("low-pass 120 Hz"));
    ASSERT_EQ(play("output A left").error, "");
    DspPlayer player({ output("output A left") });
    std::vector<double> tone(48000);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = std::sin(2 * std::numbers::pi * 1000 * static_cast<double>(i) / 48000);
    std::vector<std::vector<double>> result;
    player.process(tone, tone, result);
    const auto settled = std::span(result[0]).last(4800);
    EXPECT_NEAR(decibels(std::ranges::max(settled)), output("output A left").gainDb(1000), 0.05);
}

TEST_F(DspSound, isDrawn)
{
    makeFlat();
    const auto file = juce::File::createTempFile(".png");
    const std::string fonts = HEADUNIT_BUILD_DIR "/resources/fonts";
    ASSERT_EQ(plotDsp(chip.memory(), fonts, file.getFullPathName().toStdString()), "");
    const auto flat = juce::PNGImageFormat::loadFrom(file);
    write(1, 0x05, { 0 }); // the speakers' curves are gone
    ASSERT_EQ(plotDsp(chip.memory(), fonts, file.getFullPathName().toStdString()), "");
    const auto silent = juce::PNGImageFormat::loadFrom(file);
    file.deleteFile();
    ASSERT_TRUE(flat.isValid() && silent.isValid());
    const auto differing = [&]
    {
        int count = 0;
        for (int y = 0; y < flat.getHeight(); ++y)
            for (int x = 0; x < flat.getWidth(); ++x)
                count += flat.getPixelAt(x, y) != silent.getPixelAt(x, y) ? 1 : 0;
        return count;
    };
    EXPECT_GT(differing(), 1000);
    EXPECT_THAT(plotDsp(chip.memory(), "/nowhere", "x.png"), HasSubstr("no fonts"));
}

} // namespace
