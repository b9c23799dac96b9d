#include "platform/sound/Sound.h"

#include "platform/base/System.h"
#include "support/ErrorLog.h"

#include <condition_variable>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <juce_audio_formats/juce_audio_formats.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace Platform;

namespace
{

/** The end of a sound card that can be listened to: a pipe that ALSA writes its samples to. */
class Listener
{
public:
    explicit Listener(const juce::File& pipe)
    {
        mkfifo(pipe.getFullPathName().toRawUTF8(), 0600);
        // Open for both, so that it has no end while nothing plays.
        descriptor = open(pipe.getFullPathName().toRawUTF8(), O_RDWR | O_CLOEXEC);
        thread = std::thread([this] { listen(); });
    }

    ~Listener()
    {
        ending = true;
        const char wakeUp[block] {};
        EXPECT_EQ(write(descriptor, wakeUp, sizeof(wakeUp)), static_cast<ssize_t>(sizeof(wakeUp)));
        thread.join();
        close(descriptor);
    }

    /** Whether the loudest samples become these, within a time that a loaded machine does not need. */
    bool hears(float left, float right)
    {
        std::unique_lock guard(lock);
        const auto near = [](float one, float other) { return std::abs(one - other) < 0.005f; };
        return heard.wait_for(guard, std::chrono::seconds(60),
                              [&] { return near(peaks[0], left) && near(peaks[1], right); });
    }

private:
    static constexpr size_t block = 4096;

    void listen()
    {
        float samples[block / sizeof(float)];
        size_t filled = 0;
        while (!ending)
        {
            const auto count = read(descriptor, reinterpret_cast<char*>(samples) + filled, block - filled);
            filled += count > 0 ? static_cast<size_t>(count) : 0;
            if (filled < block)
                continue;
            filled = 0;
            const std::lock_guard guard(lock);
            peaks[0] = peaks[1] = 0;
            for (size_t index = 0; index < std::size(samples); ++index)
                peaks[index % 2] = std::max(peaks[index % 2], samples[index]);
            heard.notify_all();
        }
    }

    int descriptor = -1;
    std::atomic<bool> ending { false };
    std::mutex lock;
    std::condition_variable heard;
    float peaks[2] {};
    std::thread thread;
};

class SoundTest : public testing::Test
{
protected:
    SoundTest() { folder.createDirectory(); }
    ~SoundTest() override
    {
        releaseSound();
        setWaveOutVolume(0xFFFFFFFF);
        unsetenv("ALSA_CONFIG_PATH");
        folder.deleteRecursively();
    }

    void setAlsa(const juce::String& configuration)
    {
        const auto file = folder.getChildFile("alsa.conf");
        file.replaceWithText(configuration);
        setenv("ALSA_CONFIG_PATH", file.getFullPathName().toRawUTF8(), 1);
    }

    /** A file in which every sample has the level. */
    juce::String makeSound(float level, int samples, double rate = 22050, unsigned channels = 1)
    {
        const auto file = folder.getChildFile("alert" + juce::String(samples) + ".wav");
        juce::WavAudioFormat format;
        const std::unique_ptr<juce::AudioFormatWriter> writer(
            format.createWriterFor(file.createOutputStream().release(), rate, channels, 16, {}, 0));
        juce::AudioBuffer<float> buffer(static_cast<int>(channels), samples);
        for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
            juce::FloatVectorOperations::fill(buffer.getWritePointer(channel), level, samples);
        writer->writeFromAudioSampleBuffer(buffer, 0, samples);
        return file.getFullPathName();
    }

    const juce::File folder = juce::File::createTempFile("sound");
    ErrorLog log;
};

} // namespace

TEST_F(SoundTest, WithoutASoundCardItIsSaidOnce)
{
    setAlsa("");
    const auto sound = makeSound(0.5f, 1000);
    EXPECT_FALSE(PlaySound(sound));
    EXPECT_FALSE(PlaySound(sound));
    EXPECT_FALSE(PlaySound(""));
    EXPECT_EQ(log.take().size(), 1u);
}

TEST_F(SoundTest, WhatIsNoSoundIsNamed)
{
    const auto garbage = folder.getChildFile("garbage.wav");
    garbage.replaceWithText("RIFF\xFF\xFF\xFF\x7FWAVEfmt nonsense");
    for (const auto& each : { juce::String("no-such.wav"), folder.getFullPathName(), garbage.getFullPathName(),
                              makeSound(0, 0), makeSound(0, 10, 100), makeSound(0, 9 << 20) })
    {
        EXPECT_FALSE(PlaySound(each)) << each;
        EXPECT_EQ(log.count(each.toStdString()), 1) << each;
        EXPECT_EQ(log.take().size(), 1u) << each;
    }
}

/** The alert starts on a thread of its own, gets louder on the right, is replaced, and stops. */
TEST_F(SoundTest, LoopsAtTheWaveOutVolume)
{
    const auto pipe = folder.getChildFile("pipe");
    Listener listener(pipe);
    setAlsa("pcm.!default { type file file \"" + pipe.getFullPathName() +
            "\" format raw slave.pcm { type null } }\nctl.!default { type hw card 0 }\n");
    setWaveOutVolume(0x7FFF3FFF);
    // Far shorter than what the device asks for at a time.
    std::thread alert([this] { EXPECT_TRUE(PlaySound(makeSound(0.5f, 7))); });
    EXPECT_TRUE(listener.hears(0.125f, 0.25f));
    setWaveOutVolume(0xFFFF0000);
    EXPECT_TRUE(listener.hears(0.0f, 0.5f));
    alert.join();

    setWaveOutVolume(0xFFFFFFFF);
    EXPECT_TRUE(PlaySound(makeSound(0.75f, 22050, 48000, 2)));
    EXPECT_TRUE(listener.hears(0.75f, 0.75f));
    EXPECT_FALSE(PlaySound(""));
    EXPECT_TRUE(PlaySound(makeSound(0.25f, 3000)));
    EXPECT_TRUE(listener.hears(0.25f, 0.25f));
    releaseSound();
    EXPECT_TRUE(log.take().empty());
}
