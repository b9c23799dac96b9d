#include "Chime.h"

#include <cmath>
#include <juce_audio_formats/juce_audio_formats.h>
#include <numbers>
#include <toml++/toml.h>

namespace
{

constexpr int bitsPerSample = 16;
constexpr float peak = 0.9f; // of full scale: headroom for the converter
constexpr double inaudible = 1e-4;
constexpr double longestSound = 60.0;    // s
constexpr double longestTone = 20.0;     // s
constexpr double highestRate = 192000.0; // Hz

struct Tone
{
    double start = 0;     ///< s
    double frequency = 0; ///< Hz
    double level = 1;
    double attack = 0.005; ///< s
    double decay = 0.2;    ///< s to 1/e
    std::vector<double> partials { 1.0 };
};

struct Description
{
    double rate = 44100; ///< Hz
    double length = 0;   ///< s
    std::vector<Tone> tones;
};

Tone readTone(const toml::table& table)
{
    Tone tone;
    tone.start = table["start"].value_or(tone.start);
    tone.frequency = table["frequency"].value_or(tone.frequency);
    tone.level = table["level"].value_or(tone.level);
    tone.attack = table["attack"].value_or(tone.attack);
    tone.decay = table["decay"].value_or(tone.decay);
    if (const auto* partials = table["partials"].as_array())
    {
        tone.partials.clear();
        for (const auto& each : *partials)
            tone.partials.push_back(each.value_or(0.0));
    }
    return tone;
}

Description read(const toml::table& table)
{
    Description description;
    description.rate = table["rate"].value_or(description.rate);
    description.length = table["length"].value_or(description.length);
    if (const auto* tones = table["tone"].as_array())
        for (const auto& each : *tones)
            if (const auto* tone = each.as_table())
                description.tones.push_back(readTone(*tone));
    return description;
}

bool isSensible(const Description& description)
{
    const bool frame = description.rate >= 8000 && description.rate <= highestRate && description.length > 0 &&
                       description.length <= longestSound && !description.tones.empty();
    return frame && std::all_of(description.tones.begin(), description.tones.end(),
                                [&](const Tone& tone)
                                {
                                    return tone.start >= 0 && tone.start < description.length && tone.frequency > 0 &&
                                           tone.frequency < description.rate / 2 && tone.attack > 0 && tone.decay > 0 &&
                                           tone.attack + tone.decay * -std::log(inaudible) < longestTone;
                                });
}

void strike(std::vector<double>& loop, const Tone& tone, double rate)
{
    const auto first = static_cast<std::size_t>(tone.start * rate);
    const auto count = static_cast<std::size_t>((tone.attack - tone.decay * std::log(inaudible)) * rate);
    for (std::size_t index = 0; index < count; ++index)
    {
        const double time = static_cast<double>(index) / rate;
        const double envelope = std::min(1.0, time / tone.attack) * std::exp(-time / tone.decay);
        double wave = 0;
        for (std::size_t partial = 0; partial < tone.partials.size(); ++partial)
        {
            const double frequency = tone.frequency * static_cast<double>(partial + 1);
            if (frequency < rate / 2)
                wave += tone.partials[partial] * std::sin(2 * std::numbers::pi * frequency * time);
        }
        loop[(first + index) % loop.size()] += tone.level * envelope * wave;
    }
}

bool writeWav(const std::vector<double>& loop, double rate, const juce::File& file)
{
    double loudest = 0;
    for (const double each : loop)
        loudest = std::max(loudest, std::abs(each));
    juce::AudioBuffer<float> samples(1, static_cast<int>(loop.size()));
    for (std::size_t index = 0; index < loop.size(); ++index)
        samples.setSample(0, static_cast<int>(index), peak * static_cast<float>(loop[index] / loudest));

    file.getParentDirectory().createDirectory();
    file.deleteFile();
    auto stream = file.createOutputStream();
    if (stream == nullptr)
        return false;
    const std::unique_ptr<juce::AudioFormatWriter> writer { juce::WavAudioFormat().createWriterFor(
        stream.get(), rate, 1, bitsPerSample, {}, 0) };
    if (writer == nullptr)
        return false;
    static_cast<void>(stream.release()); // the writer's now
    return writer->writeFromAudioSampleBuffer(samples, 0, samples.getNumSamples());
}

} // namespace

juce::Result makeChime(const juce::File& descriptionFile, const juce::File& wav)
{
    const auto fail = [](const juce::File& file, const juce::String& what)
    { return juce::Result::fail(file.getFullPathName() + ": " + what); };
    Description description;
    try
    {
        description = read(toml::parse_file(descriptionFile.getFullPathName().toStdString()));
    }
    catch (const toml::parse_error& error)
    {
        return fail(descriptionFile, error.what());
    }
    if (!isSensible(description))
        return fail(descriptionFile, "a rate, a length and tones within the length are wanted");
    std::vector<double> loop(static_cast<std::size_t>(description.length * description.rate));
    for (const auto& tone : description.tones)
        strike(loop, tone, description.rate);
    return writeWav(loop, description.rate, wav) ? juce::Result::ok() : fail(wav, "it cannot be written");
}
