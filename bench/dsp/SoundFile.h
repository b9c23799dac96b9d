#pragma once

#include <juce_audio_formats/juce_audio_formats.h>
#include <vector>

namespace Bench
{

/**
    A WAV file of one or two channels, read from begin to end at the DSP's rate. A file of another rate is interpolated; of one
    with a higher rate, what lies above 24 kHz folds back.
*/
class SoundFile
{
public:
    /** Empty on success, else what is wrong with it. */
    std::string open(const juce::File& file);

    /** Samples of each channel at the DSP's rate. */
    juce::int64 length() const;
    /** The next `count` samples of both channels; of a file with one they are the same. False when it cannot be read. */
    bool read(int count, std::vector<double>& left, std::vector<double>& right);

private:
    using Interpolator = juce::Interpolators::WindowedSinc;

    std::unique_ptr<juce::AudioFormatReader> reader;
    double step = 1; ///< samples of the file for each of the DSP's
    juce::int64 next = 0;
    std::array<Interpolator, 2> interpolators;
    juce::AudioBuffer<float> fromFile, atRate;
};

} // namespace Bench
