#pragma once

#include <atomic>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <thread>

namespace BenchProgram
{

/** A program's end of the bench's control socket. Without a bench there is none, and the program works all the same. */
class ControlChannel
{
public:
    ControlChannel() = default;
    ~ControlChannel();
    ControlChannel(const ControlChannel&) = delete;
    ControlChannel& operator=(const ControlChannel&) = delete;

    using Order = std::function<void(const nlohmann::json&)>;
    using Lost = std::function<void()>;

    /** False when nobody listens there. Both functions are called on the channel's own thread. */
    bool open(const std::string& path, Order onOrder, Lost onLost);
    void close();
    /** With the time of the call. Any thread. Nothing happens when the channel is not open. */
    void report(nlohmann::json event);

private:
    int descriptor = -1;
    std::atomic<bool> closing { false };
    std::thread thread;

    void run(const Order& onOrder, const Lost& onLost) const;
};

} // namespace BenchProgram
