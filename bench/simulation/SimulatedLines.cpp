#include "bench/simulation/SimulatedLines.h"

#include "bench/simulation/Allocations.h"

#include "doubles/SerialPortDouble.h"

#include <algorithm>

namespace Simulation
{

using Platform::doubles::SerialPortDouble;

Devices::Devices()
{
    Scheduler::get().addSource({ [this] { return due(); }, [this] { advance(); } });
}

void Devices::advance()
{
    for (auto* device : all)
        device->advance(Clock::now());
}

std::optional<Clock::time_point> Devices::due() const
{
    std::optional<Clock::time_point> next;
    for (const auto* device : all)
        if (const auto each = device->due(); each && (!next || *each < *next))
            next = each;
    return next;
}

SimulatedSerial::SimulatedSerial(std::string portName, Devices& devicesToUse)
    : name(std::move(portName))
    , devices(devicesToUse)
    , reader("serial " + name)
{
    SerialPortDouble::failOpen(name, true);
    SerialPortDouble::onWrite(name,
                              [this](const juce::MemoryBlock& bytes)
                              {
                                  const BenchPart part;
                                  const std::span written(static_cast<const std::uint8_t*>(bytes.getData()),
                                                          bytes.getSize());
                                  listener(true, written);
                                  toDevice.insert(toDevice.end(), written.begin(), written.end());
                              });
    Scheduler::get().addSource({ [this] { return due(); }, [this] { run(); } });
}

std::string SimulatedSerial::open()
{
    opened = true;
    SerialPortDouble::failOpen(name, false);
    return {};
}

void SimulatedSerial::close()
{
    opened = false;
    flush();
    SerialPortDouble::failOpen(name, true);
}

bool SimulatedSerial::write(std::span<const std::uint8_t> bytes)
{
    if (!opened)
        return false;
    toUnit.insert(toUnit.end(), bytes.begin(), bytes.end());
    return true;
}

void SimulatedSerial::flush()
{
    toDevice.clear();
    toUnit.clear();
}

std::optional<Clock::time_point> SimulatedSerial::due() const
{
    if ((!toUnit.empty() && reader.isIdle() && SerialPortDouble::isOpen(name)) || (!toDevice.empty() && reading))
        return Clock::now();
    return {};
}

void SimulatedSerial::run()
{
    auto& chance = Scheduler::get().getChance();
    const bool takes = !toDevice.empty() && reading;
    const bool gives = !toUnit.empty() && reader.isIdle() && SerialPortDouble::isOpen(name);
    auto& from = takes && (!gives || chance.happens(500)) ? toDevice : toUnit;
    // Mostly all that is there, as on a machine that has time; now and then a piece.
    constexpr int piecesOf1000 = 200;
    const auto count = chance.happens(piecesOf1000) ? 1 + chance.below(from.size()) : from.size();
    const std::vector<std::uint8_t> bytes(from.begin(), from.begin() + static_cast<std::ptrdiff_t>(count));
    from.erase(from.begin(), from.begin() + static_cast<std::ptrdiff_t>(count));
    if (&from == &toDevice)
    {
        SerialPortDouble::takeWritten(name);
        devices.turn([&] { received(bytes); });
    }
    else
        reader.post(
            [this, bytes]
            {
                listener(false, bytes);
                SerialPortDouble::receive(name, bytes.data(), static_cast<int>(bytes.size()));
            });
}

namespace
{

std::map<std::string, SimulatedPackets*>& packetLines()
{
    static std::map<std::string, SimulatedPackets*> all;
    return all;
}

} // namespace

SimulatedPackets::SimulatedPackets(std::string pathToUse, Devices& devicesToUse)
    : path(std::move(pathToUse))
    , devices(devicesToUse)
{
    packetLines()[path] = this;
}

SimulatedPackets::~SimulatedPackets()
{
    packetLines().erase(path);
}

SimulatedPackets* SimulatedPackets::find(const std::string& path)
{
    const auto found = packetLines().find(path);
    return found == packetLines().end() ? nullptr : found->second;
}

std::string SimulatedPackets::open()
{
    opened = true;
    return {};
}

void SimulatedPackets::close()
{
    opened = false;
    for (auto& [number, connection] : std::exchange(connections, {}))
        Scheduler::get().wake(connection.waiting);
}

bool SimulatedPackets::send(int connection, Packet packet)
{
    const auto found = connections.find(connection);
    if (found == connections.end())
        return false;
    found->second.reply.emplace(packet.begin(), packet.end());
    Scheduler::get().wake(found->second.waiting);
    return true;
}

void SimulatedPackets::drop(int connection)
{
    const auto found = connections.find(connection);
    if (found == connections.end())
        return;
    auto* waiting = found->second.waiting;
    connections.erase(found);
    Scheduler::get().wake(waiting);
    devices.turn([&] { closed(connection); });
}

int SimulatedPackets::connect()
{
    const BenchPart part;
    if (!opened)
        return 0;
    connections[++lastConnection] = {};
    devices.turn([&] { connected(lastConnection, 0); });
    return lastConnection;
}

void SimulatedPackets::disconnect(int connection)
{
    const BenchPart part;
    if (connections.erase(connection) > 0)
        devices.turn([&] { closed(connection); });
}

std::optional<std::vector<std::uint8_t>> SimulatedPackets::exchange(int connection, Packet request, int limitMs)
{
    const BenchPart part;
    auto& scheduler = Scheduler::get();
    const auto deadline = scheduler.now() + std::chrono::milliseconds(limitMs);
    const auto mine = connections.find(connection);
    if (mine == connections.end())
        return {};
    mine->second.reply.reset();
    devices.turn([&] { received(connection, request); });
    for (;;)
    {
        const auto found = connections.find(connection);
        if (found == connections.end())
            return {};
        if (found->second.reply)
            return std::exchange(found->second.reply, {});
        if (scheduler.current() == nullptr || scheduler.now() >= deadline)
            return {};
        found->second.waiting = scheduler.current();
        scheduler.wait(deadline);
        if (const auto still = connections.find(connection); still != connections.end())
            still->second.waiting = nullptr;
    }
}

} // namespace Simulation
