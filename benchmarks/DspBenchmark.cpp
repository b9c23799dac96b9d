// The audio DSP: what the engine adds to the time on the wire, and that it writes no more than it must.
#include "doubles/SpiDouble.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "dsp/akm/BootTable.h"
#include "dsp/akm/ak7738Operator.h"
#include "dsp/akm/ak773ChipManager.h"
#include "platform/config/Configuration.h"
#include "platform/settings/SetupStore.h"

#include <benchmark/benchmark.h>
#include <ctime>

namespace
{

using Spi = Platform::doubles::SpiDouble;

/** A folder of settings and images for the run. */
struct Folder
{
    Folder()
    {
        auto& configuration = Platform::Configuration::get();
        configuration.systemPath = configuration.resourcePath = path.getFullPathName() + "/";
        path.getChildFile("dsp").createDirectory();
        path.getChildFile("factory-settings.toml").replaceWithText("1792 = 1\n");
        for (const auto& image : Dsp::images)
        {
            juce::MemoryBlock content(image.size, true);
            content[0] = static_cast<char>(image.firstByte);
            path.getChildFile("dsp").getChildFile(image.file).replaceWithData(content.getData(), content.getSize());
        }
    }
    ~Folder()
    {
        Platform::VX_ReleaseSetupInfo();
        path.deleteRecursively();
    }
    const juce::File path = juce::File::getSpecialLocation(juce::File::tempDirectory)
                                .getChildFile("headunit-benchmark-" + juce::Uuid().toString());
};

/** Bytes in both directions since the last call, checksums read included or not. */
double takeBytes(bool withReads)
{
    std::size_t bytes = 0;
    for (const auto& operation : Spi::takeOperations())
        if (operation.step == Spi::Step::write || withReads)
            bytes += operation.bytes.size() + operation.length;
    return static_cast<double>(bytes);
}

/** Processor time of a boot beside the time that its bytes and the ordered waits take. */
void boot(benchmark::State& state)
{
    const Folder folder;
    Spi::reset();
    constexpr double secondsPerByte = 8.0 / 1'000'000;
    constexpr double waits = 0.045;
    double bytes = 0;
    double processor = 0;
    for ([[maybe_unused]] auto _ : state)
    {
        const auto start = std::clock();
        Dsp::ak7738Operator::getInstance()->boot();
        processor += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        bytes += takeBytes(true);
    }
    const auto wire = bytes * secondsPerByte + static_cast<double>(state.iterations()) * waits;
    state.counters["wire_ms"] = 1000 * wire / static_cast<double>(state.iterations());
    state.counters["processor_percent"] = 100 * processor / wire;
}
BENCHMARK(boot)->Name("Dsp/boot")->Iterations(10)->Unit(benchmark::kMillisecond);

/** Seven bands in three groups; a doubled filter is 33 bytes with its header, a single one 18, the take-over 3. */
void presetChange(benchmark::State& state)
{
    constexpr double doubledBands = 5, singleBands = 2, groups = 3;
    constexpr double leastBytes = groups * (doubledBands * (33 + 3) + singleBands * (18 + 3));
    const Folder folder;
    Spi::reset();
    auto& manager = *Dsp::ak773ChipManager::getInstance();
    manager.init(*Dsp::DSPSettingHelperImpl::getInstance());
    takeBytes(false);
    double bytes = 0;
    for ([[maybe_unused]] auto _ : state)
    {
        manager.getEQService().applyPreset();
        state.PauseTiming();
        bytes += takeBytes(false);
        state.ResumeTiming();
    }
    state.counters["bytes"] = bytes / static_cast<double>(state.iterations());
    state.counters["least_bytes"] = leastBytes;
}
BENCHMARK(presetChange)->Name("Dsp/presetChange")->Iterations(50)->Unit(benchmark::kMicrosecond);

void designFilter(benchmark::State& state)
{
    const auto precision = static_cast<Dsp::Precision>(state.range(0));
    double gain = -12;
    for ([[maybe_unused]] auto _ : state)
    {
        benchmark::DoNotOptimize(Dsp::designBiquad(Dsp::FilterType::peaking, precision, 1000, 1.5, gain));
        gain = gain < 12 ? gain + 1 : -12;
    }
}
BENCHMARK(designFilter)->Name("Dsp/designFilter")->Arg(0)->Arg(1)->ArgName("single");

} // namespace
