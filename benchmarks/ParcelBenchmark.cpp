#include "Allocations.h"
#include "EngineLayer/network/MarineRecords.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstring>

using namespace EngineLayer;
using namespace Platform;

namespace
{

/** As the manager uses them: one parcel that keeps its memory. */
template <typename Work>
void measure(benchmark::State& state, int bytes, Work work)
{
    work();
    const auto before = Benchmarks::allocationCount();
    for ([[maybe_unused]] auto _ : state)
        work();
    state.counters["allocations"] =
        static_cast<double>(Benchmarks::allocationCount() - before) / static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * bytes);
}

void composeZone(Parcel& parcel)
{
    constexpr ZoneSettings settings { 3, 8, 8, 7, 6, 5, 2, 2 };
    parcel.recycle();
    PGNHelper::writePGNHead(parcel, pgnZoneConfiguration);
    writeZoneConfiguration(parcel, 2, settings);
}

void encode(benchmark::State& state)
{
    Parcel parcel;
    composeZone(parcel);
    measure(state, parcel.dataSize(),
            [&]
            {
                composeZone(parcel);
                benchmark::DoNotOptimize(parcel.data());
            });
}
BENCHMARK(encode)->Name("Parcel/encode");

/** Every value of the record, one after the other. */
void decode(benchmark::State& state)
{
    Parcel parcel;
    composeZone(parcel);
    measure(state, parcel.dataSize(),
            [&]
            {
                constexpr int singleBytes = 10;
                parcel.setReadPosition(0);
                int sum = PGNHelper::readPGNFromParcel(parcel) + parcel.readByte() + parcel.readShort();
                for (int i = 0; i < singleBytes; ++i)
                    sum += parcel.readByte();
                sum += parcel.readInt() + parcel.readInt();
                benchmark::DoNotOptimize(sum);
            });
}
BENCHMARK(decode)->Name("Parcel/decode");

/** A command for volume and mute, taken apart and acknowledged. */
void obey(benchmark::State& state)
{
    constexpr std::array<std::uint8_t, 18> command { 0x00, 0xED, 1, 0, 0x23, 2, 1,  0x16, 0xFE,
                                                     1,    0xF8, 3, 1, 2,    2, 40, 4,    1 };
    Parcel parcel;
    measure(state, static_cast<int>(command.size()),
            [&]
            {
                parcel.fillData(command.data(), static_cast<int>(command.size()));
                auto packet = PGNPacket::parse(parcel);
                checkZoneVolume(*packet);
                benchmark::DoNotOptimize(packet->getAckPacket().data());
            });
}
BENCHMARK(obey)->Name("Parcel/groupFunction");

/** The limit: the bytes of the record moved, and nothing done with them. */
void copy(benchmark::State& state)
{
    Parcel parcel;
    composeZone(parcel);
    const auto size = static_cast<std::size_t>(parcel.dataSize());
    std::array<std::uint8_t, 102> target {};
    measure(state, parcel.dataSize(),
            [&]
            {
                const auto* source = parcel.data();
                benchmark::DoNotOptimize(source);
                std::memcpy(target.data(), source, size);
                benchmark::DoNotOptimize(target);
            });
}
BENCHMARK(copy)->Name("Parcel/memoryCopy");

} // namespace
