#include "bench/dsp/DspPlayer.h"

#include "bench/dsp/SoundFile.h"

#include <algorithm>
#include <cmath>

namespace Bench
{

namespace
{

constexpr int framesAtOnce = 4096;
constexpr int bitsPerSample = 24;

Played failed(std::string error)
{
    Played result;
    result.error = std::move(error);
    return result;
}

std::unique_ptr<juce::AudioFormatWriter> openWriter(const juce::File& file, std::size_t channels)
{
    juce::WavAudioFormat wav;
    auto stream = std::make_unique<juce::FileOutputStream>(file);
    if (!stream->openedOk())
        return {};
    std::unique_ptr<juce::AudioFormatWriter> writer(wav.createWriterFor(
        stream.get(), dspSampleRate, static_cast<unsigned>(channels), bitsPerSample, juce::StringPairArray(), 0));
    if (writer != nullptr)
        static_cast<void>(stream.release()); // the writer's from here on
    return writer;
}

/** Fills the row and brings every sample to full scale at most. */
void takeRow(const std::vector<double>& row, float* into, Played& result, Played::Peak& peak)
{
    for (std::size_t i = 0; i < row.size(); ++i)
    {
        peak.level = std::max(peak.level, std::abs(row[i]));
        result.clipped += std::abs(row[i]) > 1 ? 1 : 0;
        into[i] = static_cast<float>(std::clamp(row[i], -1.0, 1.0));
    }
}

} // namespace

DspPlayer::DspPlayer(std::vector<DspOutput> outputsToPlay)
{
    for (auto& output : outputsToPlay)
    {
        Channel channel { std::move(output), {} };
        for (const auto& filter : channel.output.filters)
            channel.stages.push_back({ filter });
        channels.push_back(std::move(channel));
    }
}

double DspPlayer::Stage::next(double x)
{
    const auto y = filter.b0 * x + filter.b1 * x1 + filter.b2 * x2 - filter.a1 * y1 - filter.a2 * y2;
    x2 = std::exchange(x1, x);
    y2 = std::exchange(y1, y);
    return y;
}

void DspPlayer::process(std::span<const double> left, std::span<const double> right,
                        std::vector<std::vector<double>>& results)
{
    results.resize(channels.size());
    for (std::size_t index = 0; index < channels.size(); ++index)
    {
        auto& channel = channels[index];
        auto& row = results[index];
        row.resize(left.size());
        for (std::size_t i = 0; i < left.size(); ++i)
            row[i] = channel.output.fromLeft * left[i] + channel.output.fromRight * right[i];
        if (channel.output.isSilent())
            continue;
        for (auto& stage : channel.stages)
            for (auto& sample : row)
                sample = stage.next(sample);
    }
}

Played playFile(const DspMemory& memory, const std::string& in, const std::string& out, const std::string& selection)
{
    auto outputs = outputsOf(memory);
    std::erase_if(outputs, [&](const DspOutput& output) { return !output.name.starts_with(selection); });
    if (outputs.empty())
        return failed("there is no output '" + selection + "'");
    const auto folder = juce::File::getCurrentWorkingDirectory();
    const auto inFile = folder.getChildFile(in), outFile = folder.getChildFile(out);
    if (inFile == outFile)
        return failed(out + ": is the input, too");
    SoundFile sound;
    if (const auto error = sound.open(inFile); !error.empty())
        return failed(in + ": " + error);
    const juce::TemporaryFile written(outFile);
    auto writer = openWriter(written.getFile(), outputs.size());
    if (writer == nullptr)
        return failed(out + ": cannot be written");

    Played result;
    for (const auto& output : outputs)
        result.peaks.push_back({ output.name, 0 });
    DspPlayer player(std::move(outputs));
    juce::AudioBuffer<float> output(static_cast<int>(result.peaks.size()), framesAtOnce);
    std::vector<double> left, right;
    std::vector<std::vector<double>> rows;
    const auto length = sound.length();
    for (juce::int64 at = 0; at < length; at += framesAtOnce)
    {
        const auto count = static_cast<int>(std::min<juce::int64>(framesAtOnce, length - at));
        if (!sound.read(count, left, right))
            return failed(in + ": ends early");
        player.process(left, right, rows);
        for (std::size_t i = 0; i < rows.size(); ++i)
            takeRow(rows[i], output.getWritePointer(static_cast<int>(i)), result, result.peaks[i]);
        if (!writer->writeFromAudioSampleBuffer(output, 0, count))
            return failed(out + ": cannot be written");
    }
    result.seconds = static_cast<double>(length) / dspSampleRate;
    const bool flushed = writer->flush();
    writer.reset();
    return flushed && written.overwriteTargetFileWithTemporary() ? result : failed(out + ": cannot be written");
}

} // namespace Bench
