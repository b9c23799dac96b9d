// From a display's volume command on the port to the write to the DSP and to the acknowledgement: the real engine.
#include "bench/unit/Unit.h"
#include "benchmarks/Latencies.h"

#include <benchmark/benchmark.h>

namespace
{

constexpr int samples = 100;
constexpr auto patience = std::chrono::seconds(10);
constexpr int pgnFromNetwork = 11;

/** Timed from the write of the frame, which the simulated line takes at once, to `stream` with `beginning`. */
void volumeCommand(benchmark::State& state, const std::string& stream, const std::string& beginning)
{
    auto options = Bench::Unit::Options::besideThisProgram();
    options.display = Bench::Display::none;
    Bench::Unit unit(options);
    auto error = unit.start();
    if (error.empty())
        error = unit.startEngine();
    const auto settled = Bench::isEvent("settled", "mbFM");
    if (!error.empty() || !unit.journal.waitFor({}, Bench::Clock::now() + patience, settled))
    {
        state.SkipWithError(error.empty() ? "the unit does not start" : error.c_str());
        return;
    }
    std::vector<double> latencies;
    for ([[maybe_unused]] auto _ : state)
    {
        const auto from = unit.journal.end();
        const auto percent = static_cast<std::uint8_t>(latencies.size() % 2 == 0 ? 44 : 42);
        unit.mcu->send({ pgnFromNetwork,
                         { 0x00, 0xED, 0x01, 0x00, 0x23, 0x02, 0x01, 0x16, 0xFE, 0x01, 0xF8, 2, 1, 1, 2, percent } });
        const auto deadline = Bench::Clock::now() + patience;
        const auto sent = unit.journal.waitFor(from, deadline, Bench::isIn("sent EVENT_PGN_FROM_CAN"));
        const auto isFollowed = [&](const Bench::Event& event)
        { return event.stream == stream && event.text.starts_with(beginning); };
        const auto followed = sent ? unit.journal.waitFor(sent->place(), deadline, isFollowed) : std::nullopt;
        // The report of the new volume is the last that comes of it.
        const auto isReport = [](const Bench::Event& event)
        { return event.stream == "frame EVENT_PGN_SEND_CAN" && event.text.starts_with("16 fe 01"); };
        if (!followed || !unit.journal.waitFor(sent->place(), deadline, isReport))
        {
            state.SkipWithError("a command was not carried out");
            break;
        }
        latencies.push_back(std::chrono::duration<double, std::micro>(followed->at - sent->at).count());
        state.SetIterationTime(latencies.back() / 1e6);
    }
    constexpr double limit = 100'000; // what a person takes for at once
    reportLatencies(state, latencies);
    state.counters["limit_us"] = limit;
    unit.stop();
}

void toDsp(benchmark::State& state)
{
    volumeCommand(state, "dsp write", "");
}

void toAcknowledgement(benchmark::State& state)
{
    volumeCommand(state, "frame EVENT_PGN_SEND_CAN", "00 ed 01 00 23 02 02");
}

BENCHMARK(toDsp)
    ->Name("VolumeCommand/toDspWrite")
    ->UseManualTime()
    ->Iterations(samples)
    ->Repetitions(1)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(toAcknowledgement)
    ->Name("VolumeCommand/toAcknowledgement")
    ->UseManualTime()
    ->Iterations(samples)
    ->Repetitions(1)
    ->Unit(benchmark::kMicrosecond);

} // namespace
