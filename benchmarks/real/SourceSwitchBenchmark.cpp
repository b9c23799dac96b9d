// From a frame on the port to the order at a program: the real engine, bus and programs, beside the bus's own round
// trip.
#include "bench/unit/Unit.h"
#include "benchmarks/Latencies.h"

#include <array>
#include <benchmark/benchmark.h>
#include <poll.h>
#include <systemd/sd-bus.h>
#include <thread>

namespace
{

using Milliseconds = std::chrono::milliseconds;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr int samples = 100;
constexpr auto patience = std::chrono::seconds(10);

/**
    AM and AUX in turn. Timed from the write of EVENT_SRC_SWITCH to the first command line that a connected program
    reports, so the program's own report is part of it.
*/
void frameToOrder(benchmark::State& state)
{
    auto options = Bench::Unit::Options::besideThisProgram();
    options.display = Bench::Display::none;
    Bench::Unit unit(options);
    auto error = unit.start();
    if (error.empty())
        error = unit.startEngine();
    if (!error.empty() || !unit.journal.waitFor({}, Bench::Clock::now() + patience, Bench::isIn("mcu agreed")))
    {
        state.SkipWithError(error.empty() ? "the unit does not start" : error.c_str());
        return;
    }
    const auto isOrder = [](const Bench::Event& event)
    { return event.stream.starts_with("program ") && event.text.starts_with("command-line"); };
    const std::array<std::string, 1> am { "am" };
    const std::array<std::string, 1> aux { "aux" };
    std::vector<double> latencies;
    for ([[maybe_unused]] auto _ : state)
    {
        const auto from = unit.journal.end();
        unit.mcu->requestSource(*Bench::findSource(latencies.size() % 2 == 0 ? aux : am));
        const auto deadline = Bench::Clock::now() + patience;
        const auto sent = unit.journal.waitFor(from, deadline, Bench::isIn("sent EVENT_SRC_SWITCH"));
        const auto ordered = sent ? unit.journal.waitFor(sent->place(), deadline, isOrder) : std::nullopt;
        if (!ordered || !unit.journal.waitFor(from, deadline, Bench::isIn("mcu agreed")))
        {
            state.SkipWithError("a source switch did not end");
            break;
        }
        latencies.push_back(Microseconds(ordered->at - sent->at).count());
        state.SetIterationTime(latencies.back() / 1e6);
    }
    reportLatencies(state, latencies);
    unit.stop();
}
BENCHMARK(frameToOrder)
    ->Name("SourceSwitch/frameToOrder")
    ->UseManualTime()
    ->Iterations(samples)
    ->Repetitions(1)
    ->Unit(benchmark::kMicrosecond);

int answer(sd_bus_message* call, void*, sd_bus_error*)
{
    return sd_bus_reply_method_return(call, "");
}

sd_bus* connect(const std::string& address)
{
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0 || sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0)
        return sd_bus_unref(bus);
    return bus;
}

/** A call between two connections of the same bus and its empty reply. */
void busRoundTrip(benchmark::State& state)
{
    Bench::Unit unit(Bench::Unit::Options::besideThisProgram());
    if (const auto error = unit.start(); !error.empty())
    {
        state.SkipWithError(error.c_str());
        return;
    }
    auto* caller = connect(unit.engine().busAddress());
    auto* callee = connect(unit.engine().busAddress());
    const char* name = nullptr;
    if (caller == nullptr || callee == nullptr || sd_bus_get_unique_name(callee, &name) < 0)
    {
        state.SkipWithError("no connection to the bus");
        return;
    }
    const sd_bus_vtable methods[] = { SD_BUS_VTABLE_START(0),
                                      SD_BUS_METHOD("Ping", "", "", answer, SD_BUS_VTABLE_UNPRIVILEGED),
                                      SD_BUS_VTABLE_END };
    sd_bus_add_object_vtable(callee, nullptr, "/peer", "bench.Peer", methods, nullptr);
    std::atomic<bool> stop { false };
    std::thread peer(
        [&]
        {
            constexpr std::uint64_t waitUs = 10'000;
            while (!stop)
                if (sd_bus_process(callee, nullptr) == 0)
                    sd_bus_wait(callee, waitUs);
        });
    std::vector<double> latencies;
    for ([[maybe_unused]] auto _ : state)
    {
        const auto start = Bench::Clock::now();
        if (sd_bus_call_method(caller, name, "/peer", "bench.Peer", "Ping", nullptr, nullptr, "") < 0)
        {
            state.SkipWithError("a call failed");
            break;
        }
        latencies.push_back(Microseconds(Bench::Clock::now() - start).count());
        state.SetIterationTime(latencies.back() / 1e6);
    }
    stop = true;
    peer.join();
    reportLatencies(state, latencies);
    sd_bus_flush_close_unref(caller);
    sd_bus_flush_close_unref(callee);
}
BENCHMARK(busRoundTrip)
    ->Name("SourceSwitch/busRoundTrip")
    ->UseManualTime()
    ->Iterations(samples)
    ->Repetitions(1)
    ->Unit(benchmark::kMicrosecond);

} // namespace
