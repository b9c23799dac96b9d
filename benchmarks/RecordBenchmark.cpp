// What a step and a lock cost while nothing is recorded, and while it is.
#include "platform/base/Threads.h"
#include "platform/record/RecordWriter.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>

namespace
{

namespace fs = std::filesystem;
using Platform::Step;

/** Records as long as it lives. */
class Recording
{
public:
    Recording()
    {
        if (::mkdtemp(folder.data()) == nullptr)
            return;
        constexpr std::uint64_t limit = 64 * 1024 * 1024;
        std::ofstream(folder + "/engine.toml") << "[unit]\n";
        writer = Platform::RecordWriter::open({ folder + "/recording", folder + "/engine.toml", "", limit }, error);
        Platform::Recorder::setActive(writer.get());
    }
    ~Recording()
    {
        Platform::Recorder::setActive(nullptr);
        writer.reset();
        fs::remove_all(folder);
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    std::string error = "no folder";

private:
    std::string folder = (fs::temp_directory_path() / "headunit-record-XXXXXX").string();
    std::unique_ptr<Platform::RecordWriter> writer;
};

template <auto work>
void unrecorded(benchmark::State& state)
{
    for (auto unused : state)
        work();
}

template <auto work>
void recorded(benchmark::State& state)
{
    const Recording recording;
    if (!recording.error.empty())
        return state.SkipWithError(recording.error.c_str());
    for (auto unused : state)
        work();
}

void postMessage()
{
    static int argument = 0;
    Platform::recordStep(Step::posted, 30, 33'554'440, ++argument, 0);
}

/** As a display sends it. */
void receiveFrame()
{
    static const std::array<std::uint8_t, 64> frame {};
    Platform::recordStep(Step::portBytes, "/dev/ttyS1", std::span(frame));
}

template <typename Lock>
void takeLock()
{
    static Lock lock;
    const std::lock_guard guard(lock);
    benchmark::ClobberMemory();
}

/** The least that a step with its time needs. */
void lookAtClock()
{
    benchmark::DoNotOptimize(Platform::Clock::now());
}

// Fewer than wait for the disk, so that none is lost.
constexpr int mostWaiting = 40'000;

BENCHMARK(unrecorded<postMessage>)->Name("Record/off");
BENCHMARK(recorded<postMessage>)->Name("Record/on")->Iterations(mostWaiting);
BENCHMARK(recorded<receiveFrame>)->Name("Record/onFrame")->Iterations(mostWaiting);
BENCHMARK(unrecorded<lookAtClock>)->Name("Record/clock");
BENCHMARK(unrecorded<takeLock<std::recursive_mutex>>)->Name("Lock/recursive");
BENCHMARK(unrecorded<takeLock<Platform::Mutex>>)->Name("Lock/off");
BENCHMARK(recorded<takeLock<Platform::Mutex>>)->Name("Lock/on")->Iterations(mostWaiting);

} // namespace
