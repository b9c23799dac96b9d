#include "bench/dsp/SoundFile.h"

#include "bench/dsp/DspMap.h"

#include <cmath>

namespace Bench
{

std::string SoundFile::open(const juce::File& file)
{
    if (!file.existsAsFile())
        return "there is no such file";
    juce::WavAudioFormat wav;
    if (auto stream = file.createInputStream())
        reader.reset(wav.createReaderFor(stream.release(), true));
    if (reader == nullptr)
        return "is no WAV file that can be read";
    if (reader->numChannels < 1 || reader->numChannels > 2 || reader->sampleRate <= 0)
        return "has " + std::to_string(reader->numChannels) + " channels at " +
               std::to_string(std::lround(reader->sampleRate)) + " Hz; the DSP takes 1 or 2";
    step = reader->sampleRate / dspSampleRate;
    // An interpolator answers late: what it says before is left out.
    std::vector<double> left, right;
    const auto late = step == 1 ? 0 : static_cast<int>(std::lround(Interpolator::getBaseLatency() / step));
    return read(late, left, right) ? "" : "cannot be read";
}

juce::int64 SoundFile::length() const
{
    return static_cast<juce::int64>(std::ceil(static_cast<double>(reader->lengthInSamples) / step));
}

bool SoundFile::read(int count, std::vector<double>& left, std::vector<double>& right)
{
    const bool isAtRate = step == 1;
    const auto wanted = isAtRate ? count : static_cast<int>(std::ceil(count * step)) + 1;
    fromFile.setSize(2, wanted, false, false, true);
    atRate.setSize(2, count, false, false, true);
    // One channel is read into both, and behind the end there is silence.
    if (wanted > 0 && !reader->read(&fromFile, 0, wanted, next, true, true))
        return false;
    auto used = count;
    for (int channel = 0; channel < 2; ++channel)
        if (isAtRate)
            atRate.copyFrom(channel, 0, fromFile, channel, 0, count);
        else
            used = interpolators[static_cast<std::size_t>(channel)].process(step, fromFile.getReadPointer(channel),
                                                                            atRate.getWritePointer(channel), count);
    next += used;
    left.assign(atRate.getReadPointer(0), atRate.getReadPointer(0) + count);
    right.assign(atRate.getReadPointer(1), atRate.getReadPointer(1) + count);
    return true;
}

} // namespace Bench
