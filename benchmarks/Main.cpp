#include <benchmark/benchmark.h>
#include <juce_events/juce_events.h>

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    const juce::ScopedJuceInitialiser_GUI messageManager;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
