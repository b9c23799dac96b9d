#include "Allocations.h"
#include "EngineLayer/hostlink/HostDataFormat.h"
#include "EngineLayer/hostlink/HostFrameParser.h"
#include "kernel/SystemEngine.h"
#include "lowlayer/HostcommDev.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <utility>
#include <vector>

using namespace EngineLayer;

namespace
{

constexpr int chunkLength = LowLayer::HostcommDev::pieceLength;

class CountingSink : public HostFrameParser::Sink
{
public:
    void onAcknowledgement(int, int) override { ++frames; }
    void onFrame(const std::uint8_t*, int) override { ++frames; }
    void onChecksumError() override { ++frames; }
    std::int64_t frames = 0;
};

/** The MCU's usual traffic: many short frames, some radio texts, now and then network data. */
std::vector<std::uint8_t> typicalStream()
{
    std::vector<std::uint8_t> stream;
    auto frame = HostDataFormat::obtainFrame();
    const std::vector<std::uint8_t> content(HostFrame::maxDataLength, 0x42);
    for (int sequence = 0; sequence < 256; ++sequence)
    {
        constexpr std::size_t lengths[] = { 1, 3, 2, 24, 1, 9, 3, HostFrame::maxDataLength };
        frame->build(7, std::span(content).first(lengths[sequence % std::size(lengths)]));
        frame->setSequence(sequence);
        stream.insert(stream.end(), frame->getBytes(), frame->getBytes() + frame->getFrameLength());
    }
    return stream;
}

template <typename Take>
void inChunks(const std::vector<std::uint8_t>& stream, Take take)
{
    const auto total = static_cast<int>(stream.size());
    for (int at = 0; at < total; at += chunkLength)
        take(stream.data() + at, std::min(chunkLength, total - at));
}

void ParseFrames(benchmark::State& state)
{
    const auto stream = typicalStream();
    HostFrameParser parser;
    CountingSink sink;
    const auto before = Benchmarks::allocationCount();
    for ([[maybe_unused]] auto _ : state)
        inChunks(stream, [&](const std::uint8_t* bytes, int n) { parser.appendReceived(bytes, n, sink); });
    state.counters["allocations/frame"] =
        static_cast<double>(Benchmarks::allocationCount() - before) / static_cast<double>(sink.frames);
    state.SetItemsProcessed(sink.frames);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(stream.size()));
}
BENCHMARK(ParseFrames);

/** The limit of the above: nothing but the checksum of every frame, with its place known beforehand. */
void ChecksumTheSameFrames(benchmark::State& state)
{
    const auto stream = typicalStream();
    for ([[maybe_unused]] auto _ : state)
        for (std::size_t at = 0; at < stream.size(); at += stream[at + HostFrame::lengthAt])
            benchmark::DoNotOptimize(HostFrame::checksum(stream.data() + at, stream[at + HostFrame::lengthAt]));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(stream.size()));
}
BENCHMARK(ChecksumTheSameFrames);

class ParsingClient : public LowLayer::ClientCallBack
{
public:
    void onData(int, int length, juce::ReferenceCountedObject* data) override
    {
        parser.appendReceived(dynamic_cast<LowLayer::BytePool*>(data)->dataPointer(), length, sink);
    }
    HostFrameParser parser;
    CountingSink sink;
};

/** The group of the link, stepped by hand; made on first use. */
Kernel::TaskGroup* linkGroup(LowLayer::HostcommDev* device)
{
    constexpr const char* name = "Link";
    auto* engine = Kernel::SystemEngine::getInstance();
    if (engine->createGroup(name, 5))
    {
        device->assignId(Kernel::hostcommDevId);
        engine->registerComponent(name, device);
    }
    return engine->findGroup(name);
}

/**
    From the port's reader to the parser: pooled buffers in pooled messages, one read and one pass of the group at a
    time.
*/
void ReceiveFrames(benchmark::State& state)
{
    const auto stream = typicalStream();
    auto* device = LowLayer::HostcommDev::getInstance();
    auto* group = linkGroup(device);
    ParsingClient client;
    device->setClient(&client);
    const auto receiveAll = [&]
    {
        inChunks(stream,
                 [&](const std::uint8_t* bytes, int n)
                 {
                     device->onReceive(bytes, n);
                     group->runPass();
                 });
    };
    receiveAll();
    if (std::exchange(client.sink.frames, 0) == 0)
        state.SkipWithError("no frame arrives");
    const auto before = Benchmarks::allocationCount();
    for ([[maybe_unused]] auto _ : state)
        receiveAll();
    state.counters["allocations/frame"] =
        static_cast<double>(Benchmarks::allocationCount() - before) / static_cast<double>(client.sink.frames);
    state.SetItemsProcessed(client.sink.frames);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(stream.size()));
    device->clearClient();
}
BENCHMARK(ReceiveFrames);

} // namespace
