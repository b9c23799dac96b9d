// What a step costs while nothing is recorded, and while it is.
#include "platform/record/RecordWriter.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace
{

namespace fs = std::filesystem;
using Platform::Step;

void steps(benchmark::State& state)
{
    int argument = 0;
    for (auto unused : state)
        Platform::recordStep(Step::posted, 30, 33'554'440, ++argument, 0);
}

void unrecorded(benchmark::State& state)
{
    steps(state);
}
BENCHMARK(unrecorded)->Name("Record/off");

void recorded(benchmark::State& state)
{
    auto folder = (fs::temp_directory_path() / "headunit-record-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr)
        return state.SkipWithError("no folder");
    constexpr std::uint64_t limit = 64 * 1024 * 1024;
    std::ofstream(folder + "/engine.toml") << "[unit]\n";
    std::string error;
    auto writer = Platform::RecordWriter::open({ folder + "/recording", folder + "/engine.toml", "", limit }, error);
    if (writer == nullptr)
        return state.SkipWithError(error.c_str());
    Platform::Recorder::setActive(writer.get());
    steps(state);
    Platform::Recorder::setActive(nullptr);
    writer.reset();
    fs::remove_all(folder);
}
BENCHMARK(recorded)->Name("Record/on")->Iterations(100'000);

/** The least that a step with its time needs. */
void clock(benchmark::State& state)
{
    for (auto unused : state)
        benchmark::DoNotOptimize(Platform::Clock::now());
}
BENCHMARK(clock)->Name("Record/clock");

} // namespace
