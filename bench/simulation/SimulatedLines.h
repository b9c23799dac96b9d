#pragma once

#include "bench/simulation/Scheduler.h"
#include "bench/unit/Device.h"

namespace Simulation
{

/** Lets the devices know the time before something is done to one of them, and do what is left afterwards. */
class Devices
{
public:
    Devices();

    void add(Bench::Device& device) { all.push_back(&device); }
    template <typename Call>
    void turn(Call&& call)
    {
        advance();
        call();
        advance();
    }

private:
    std::vector<Bench::Device*> all;

    void advance();
    std::optional<Clock::time_point> due() const;
};

/** A serial line between a device and the port that the engine opens by this name. Bytes come in pieces. */
class SimulatedSerial : public Bench::SerialLine
{
public:
    SimulatedSerial(std::string portName, Devices& devicesToUse);

    std::string open() override;
    void close() override;
    bool isOpen() const override { return opened; }
    bool write(std::span<const std::uint8_t> bytes) override;
    void setReading(bool on) override { reading = on; }
    void flush() override;
    /** True for what the engine writes, false for what reaches it. */
    using Listener = std::function<void(bool fromUnit, std::span<const std::uint8_t> bytes)>;
    void onTraffic(Listener newListener) { listener = std::move(newListener); }

private:
    const std::string name;
    Devices& devices;
    Lane reader;
    Listener listener = [](bool, std::span<const std::uint8_t>) {};
    bool opened = false, reading = true;
    std::vector<std::uint8_t> toDevice, toUnit;

    std::optional<Clock::time_point> due() const;
    void run();
};

/** What the engine's drivers reach as "socket:" and this path, without a socket. */
class SimulatedPackets : public Bench::PacketLine
{
public:
    SimulatedPackets(std::string pathToUse, Devices& devicesToUse);
    ~SimulatedPackets() override;

    std::string open() override;
    void close() override;
    bool send(int connection, Packet packet) override;
    void drop(int connection) override;

    // The driver's side, on a fiber.
    static SimulatedPackets* find(const std::string& path);
    /** 0 when nothing can be connected to. */
    int connect();
    void disconnect(int connection);
    bool isConnected(int connection) const { return connections.contains(connection); }
    /** Empty when there is none within the limit, or the connection is gone. */
    std::optional<std::vector<std::uint8_t>> exchange(int connection, Packet request, int limitMs);

private:
    struct Connection
    {
        Fiber* waiting = nullptr;
        std::optional<std::vector<std::uint8_t>> reply;
    };
    const std::string path;
    Devices& devices;
    bool opened = false;
    std::map<int, Connection> connections;
    int lastConnection = 0;
};

} // namespace Simulation
