#include "doubles/SpiDouble.h"
#include "platform/devices/SpiDevice.h"

#include <algorithm>
#include <boost/crc.hpp>
#include <mutex>

namespace Platform
{

namespace
{

using doubles::SpiDouble;
using Step = SpiDouble::Step;

/** Counts down to the call that fails. */
class Fault
{
public:
    void setAfter(int others) { left = others; }
    bool isNow() { return left >= 0 && left-- == 0; }

private:
    int left = -1;
};

/** What a reset forgets. */
struct Recorded
{
    std::vector<SpiDouble::Operation> operations;
    std::vector<SpiDouble::Bytes> blocks;
    std::vector<SpiDouble::Record> records;
    SpiDouble::Bytes lastBlock;
    int crcsToSpoil = 0;
    bool openFails = false;
    bool configureFails = false;
    Fault writeFault;
    Fault readFault;
};

std::mutex lock;
Recorded recorded;
int openDevices = 0;

constexpr const char* onlyBus = "SPI2:";
const SpiDouble::Bytes crcCommand { 0x00, 0x00, 0x72 };

juce::Result outcome(bool success)
{
    return success ? juce::Result::ok() : juce::Result::fail("as the test says");
}

/** With the lock. */
SpiDouble::Bytes chipAnswer(const SpiDouble::Bytes& prefix)
{
    if (prefix != crcCommand)
        return {};
    boost::crc_xmodem_t crc;
    crc.process_bytes(recorded.lastBlock.data(), recorded.lastBlock.size());
    const bool spoilt = recorded.crcsToSpoil > 0;
    if (spoilt)
        --recorded.crcsToSpoil;
    const auto value = static_cast<unsigned>(crc.checksum()) ^ (spoilt ? 0xFFFFu : 0u);
    return { static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value) };
}

class MemorySpiBus : public SpiBus
{
public:
    ~MemorySpiBus() override
    {
        const std::lock_guard guard(lock);
        recorded.operations.push_back({ Step::close });
        --openDevices;
    }

    juce::Result configure(const std::array<std::uint32_t, 10>& record) override
    {
        const std::lock_guard guard(lock);
        recorded.operations.push_back({ Step::configure });
        recorded.records.push_back(record);
        return outcome(!recorded.configureFails);
    }

    juce::Result select(bool on) override
    {
        const std::lock_guard guard(lock);
        recorded.operations.push_back({ on ? Step::select : Step::release });
        if (selected && !block.empty() && !damaged)
        {
            recorded.blocks.push_back(block);
            recorded.lastBlock = block;
        }
        selected = on;
        damaged = false;
        block.clear();
        return juce::Result::ok();
    }

    juce::Result write(std::span<const std::uint8_t> data) override
    {
        const std::lock_guard guard(lock);
        recorded.operations.push_back({ Step::write, { data.begin(), data.end() } });
        const bool fails = recorded.writeFault.isNow();
        damaged = damaged || fails;
        block.insert(block.end(), data.begin(), data.end());
        return outcome(!fails);
    }

    juce::Result read(std::span<const std::uint8_t> prefix, std::span<std::uint8_t> buffer) override
    {
        const SpiDouble::Bytes command(prefix.begin(), prefix.end());
        const std::lock_guard guard(lock);
        recorded.operations.push_back({ Step::read, command, buffer.size() });
        if (recorded.readFault.isNow())
            return outcome(false);
        auto bytes = chipAnswer(command);
        bytes.resize(buffer.size());
        std::copy(bytes.begin(), bytes.end(), buffer.begin());
        return juce::Result::ok();
    }

private:
    SpiDouble::Bytes block;
    bool selected = false;
    bool damaged = false;
};

} // namespace

SpiDevice::SpiDevice() = default;

SpiDevice::~SpiDevice() = default;

bool SpiDevice::open(const juce::String& name)
{
    close();
    const std::lock_guard guard(lock);
    recorded.operations.push_back({ Step::open });
    if (name != onlyBus || recorded.openFails)
        return false;
    bus = std::make_unique<MemorySpiBus>();
    ++openDevices;
    return true;
}

bool SpiDevice::isOpen() const
{
    return bus != nullptr;
}

void SpiDevice::close()
{
    bus.reset();
}

bool SpiDevice::configure(const std::array<std::uint32_t, 10>& record)
{
    return bus != nullptr && bus->configure(record).wasOk();
}

bool SpiDevice::select(bool on)
{
    return bus != nullptr && bus->select(on).wasOk();
}

bool SpiDevice::write(std::span<const std::uint8_t> data)
{
    return bus != nullptr && bus->write(data).wasOk();
}

bool SpiDevice::read(std::span<const std::uint8_t> prefix, std::span<std::uint8_t> buffer)
{
    return bus != nullptr && bus->read(prefix, buffer).wasOk();
}

namespace doubles
{

void SpiDouble::reset()
{
    const std::lock_guard guard(lock);
    recorded = {};
}

std::vector<SpiDouble::Operation> SpiDouble::takeOperations()
{
    const std::lock_guard guard(lock);
    return std::exchange(recorded.operations, {});
}

std::vector<SpiDouble::Bytes> SpiDouble::takeBlocks()
{
    const std::lock_guard guard(lock);
    return std::exchange(recorded.blocks, {});
}

std::vector<SpiDouble::Record> SpiDouble::takeRecords()
{
    const std::lock_guard guard(lock);
    return std::exchange(recorded.records, {});
}

int SpiDouble::getOpenDevices()
{
    const std::lock_guard guard(lock);
    return openDevices;
}

void SpiDouble::spoilCrcs(int count)
{
    const std::lock_guard guard(lock);
    recorded.crcsToSpoil = count;
}

void SpiDouble::failOpen(bool fails)
{
    const std::lock_guard guard(lock);
    recorded.openFails = fails;
}

void SpiDouble::failConfigure(bool fails)
{
    const std::lock_guard guard(lock);
    recorded.configureFails = fails;
}

void SpiDouble::failWriteAfter(int others)
{
    const std::lock_guard guard(lock);
    recorded.writeFault.setAfter(others);
}

void SpiDouble::failReadAfter(int others)
{
    const std::lock_guard guard(lock);
    recorded.readFault.setAfter(others);
}

} // namespace doubles

} // namespace Platform
