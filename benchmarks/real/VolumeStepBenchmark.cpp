// From a volume step to the last byte of what it writes to the simulated DSP.
#include "bench/unit/Unit.h"
#include "benchmarks/Latencies.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "dsp/akm/ak773ChipManager.h"
#include "platform/config/Configuration.h"
#include "platform/settings/SetupStore.h"

namespace
{

constexpr int steps = 200;

/** The step returns when its last block is confirmed, which is after its last byte. */
void volumeStep(benchmark::State& state)
{
    Bench::Unit unit(Bench::Unit::Options::besideThisProgram());
    if (const auto error = unit.start(); !error.empty())
    {
        state.SkipWithError(error.c_str());
        return;
    }
    auto& configuration = Platform::Configuration::get();
    configuration.systemPath = juce::String(unit.folder() + "/system/");
    configuration.resourcePath = juce::String(Bench::Unit::Options::besideThisProgram().resources + "/");
    configuration.spi2 = juce::String("socket:" + unit.folder() + "/spi2");
    configuration.gpio = juce::String("socket:" + unit.folder() + "/gpio");
    auto& manager = *Dsp::ak773ChipManager::getInstance();
    manager.init(*Dsp::DSPSettingHelperImpl::getInstance());
    std::vector<double> latencies;
    for ([[maybe_unused]] auto _ : state)
    {
        const auto start = Bench::Clock::now();
        if (latencies.size() % 80 < 40)
            manager.getACService().volumeUp(1, 1);
        else
            manager.getACService().volumeDown(1, 1);
        latencies.push_back(std::chrono::duration<double, std::micro>(Bench::Clock::now() - start).count());
        state.SetIterationTime(latencies.back() / 1e6);
    }
    reportLatencies(state, latencies);
    Platform::VX_ReleaseSetupInfo();
}
BENCHMARK(volumeStep)
    ->Name("Dsp/volumeStep")
    ->UseManualTime()
    ->Iterations(steps)
    ->Repetitions(1)
    ->Unit(benchmark::kMicrosecond);

} // namespace
