#include "platform/sound/Sound.h"

#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/base/Threads.h"
#include "platform/devices/linux/FailureLog.h"
#include "platform/record/Recorder.h"

#include <array>
#include <juce_audio_devices/juce_audio_devices.h>
#include <juce_audio_formats/juce_audio_formats.h>
#include <mutex>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/Sound", "PlaySound" };

constexpr int stereo = 2;
/** Three minutes at 44.1 kHz. A longer file is no alert, and is not taken into memory. */
constexpr juce::int64 longestSound = 8 * 1024 * 1024;
/** In Hz. A damaged file may name any other. */
constexpr double slowestRate = 4000.0, fastestRate = 192000.0;

/**
    A sound in memory, without an end, at the rate of the device and at the wave-out volume: the audio thread neither
    decodes nor waits for a disk.
*/
class LoopedSound : public juce::AudioSource
{
public:
    LoopedSound(juce::AudioBuffer<float> samples, double rateInHz)
        : sound(std::move(samples))
        , rate(rateInHz)
    {
    }

    void prepareToPlay(int blockSize, double deviceRate) override
    {
        resampler.setResamplingRatio(rate / deviceRate);
        resampler.prepareToPlay(blockSize, deviceRate);
        gains = gainsNow();
    }

    void releaseResources() override { resampler.releaseResources(); }

    void getNextAudioBlock(const juce::AudioSourceChannelInfo& info) override
    {
        guardStack(); // on the thread that the toolkit has for the device
        resampler.getNextAudioBlock(info);
        // The source counts the rounds too, and an alert of some hours would leave the range of its counter.
        endless.setNextReadPosition(endless.getNextReadPosition() % endless.getTotalLength());
        const auto before = std::exchange(gains, gainsNow());
        for (int channel = 0; channel < juce::jmin(stereo, info.buffer->getNumChannels()); ++channel)
            info.buffer->applyGainRamp(channel, info.startSample, info.numSamples, before[channel], gains[channel]);
    }

private:
    using Gains = std::array<float, stereo>;

    static Gains gainsNow()
    {
        constexpr juce::uint32 full = 0xFFFF;
        const auto volume = getWaveOutVolume();
        return { static_cast<float>(volume & full) / full, static_cast<float>(volume >> 16) / full };
    }

    juce::AudioBuffer<float> sound;
    juce::MemoryAudioSource endless { sound, false, true };
    juce::ResamplingAudioSource resampler { &endless, false, stereo };
    const double rate;
    Gains gains {};
};

/** What a file holds; null, and a reason, when it holds no sound. */
std::unique_ptr<LoopedSound> soundOf(const juce::File& file, juce::String& error)
{
    juce::AudioFormatManager formats;
    formats.registerBasicFormats();
    const std::unique_ptr<juce::AudioFormatReader> reader(file.existsAsFile() ? formats.createReaderFor(file)
                                                                              : nullptr);
    if (reader == nullptr)
        error = file.exists() ? "no sound file" : "there is no such file";
    else if (reader->lengthInSamples <= 0 || reader->numChannels == 0)
        error = "the file holds no sound";
    else if (reader->lengthInSamples > longestSound)
        error = "the sound is too long";
    else if (!(reader->sampleRate >= slowestRate && reader->sampleRate <= fastestRate))
        error = "a rate of " + juce::String(reader->sampleRate) + " Hz cannot be played";
    if (error.isNotEmpty())
        return nullptr;

    const auto length = static_cast<int>(reader->lengthInSamples);
    juce::AudioBuffer<float> samples(stereo, length);
    samples.clear();
    // A file with one channel fills both.
    reader->read(&samples, 0, length, 0, true, true);
    return std::make_unique<LoopedSound>(std::move(samples), reader->sampleRate);
}

/** Of the default output, for both channels. */
juce::Result openDefault(juce::AudioDeviceManager& device)
{
    const auto error = device.initialise(0, stereo, nullptr, true);
    if (error.isNotEmpty())
        return juce::Result::fail(error);
    // Without a sound card there is neither an error nor a device.
    return device.getCurrentAudioDevice() == nullptr ? juce::Result::fail("there is no sound card")
                                                     : juce::Result::ok();
}

/** The open device, with JUCE's thread behind it, for as long as a sound plays: others may want it in between. */
class Output
{
public:
    explicit Output(std::unique_ptr<LoopedSound> looped)
        : sound(std::move(looped))
    {
        player.setSource(sound.get());
    }

    ~Output()
    {
        device.removeAudioCallback(&player);
        device.closeAudioDevice();
    }

    juce::Result start()
    {
        const auto result = openDefault(device);
        if (result.wasOk())
            device.addAudioCallback(&player);
        return result;
    }

private:
    std::unique_ptr<LoopedSound> sound;
    juce::AudioSourcePlayer player;
    juce::AudioDeviceManager device;
};

/** JUCE's device manager is used under this lock alone, so that it does not matter which thread calls. */
struct Loudspeaker
{
    static Loudspeaker& get()
    {
        static Loudspeaker instance;
        return instance;
    }

    std::mutex lock;
    std::unique_ptr<Output> output;
    FailureLog failures { logger };
};

bool play(const juce::String& file)
{
    auto& speaker = Loudspeaker::get();
    const std::lock_guard guard(speaker.lock);
    speaker.output.reset();
    if (file.isEmpty())
        return false;

    juce::String error;
    auto sound = soundOf(juce::File::getCurrentWorkingDirectory().getChildFile(file), error);
    if (sound == nullptr)
    {
        logger().error(file + ": " + error);
        return false;
    }
    auto output = std::make_unique<Output>(std::move(sound));
    constexpr int device = 0;
    if (!speaker.failures.check(device, "nothing can be heard", output->start()))
        return false;
    speaker.output = std::move(output);
    return true;
}

} // namespace

bool PlaySound(const juce::String& file)
{
    return recorded(
        Step::sound, [&] { return play(file); }, file);
}

juce::Result checkSoundFile(const juce::String& file)
{
    juce::String error;
    const auto sound = soundOf(juce::File(file), error);
    return sound != nullptr ? juce::Result::ok() : juce::Result::fail(error);
}

juce::Result checkSoundCard(juce::String& name)
{
    juce::AudioDeviceManager device;
    const auto result = openDefault(device);
    if (result.wasOk())
        name = device.getCurrentAudioDevice()->getName();
    return result;
}

void releaseSound()
{
    auto& speaker = Loudspeaker::get();
    const std::lock_guard guard(speaker.lock);
    speaker.output.reset();
}

} // namespace Platform
