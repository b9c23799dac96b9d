#pragma once

#include "bench/unit/Device.h"

#include <memory>
#include <thread>

namespace asio
{
class io_context;
}

namespace Bench
{

/**
    The one thread that carries the bytes of all devices and advances their time. Whatever uses a device or one of its
    transports, on this thread or any other, takes a turn.
*/
class Loop
{
public:
    Loop();
    ~Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    /** Before `start`. They are advanced in this order. */
    void add(Device& device) { devices.push_back(&device); }
    void start();
    /** No handler runs after it returns. Not within a turn. */
    void stop();

    /**
        While a turn lasts, nobody else uses the devices. They are advanced when it begins and when it ends. Turns may
        be nested.
    */
    class Turn
    {
    public:
        explicit Turn(Loop& loopToUse);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        Loop& loop;
        std::unique_lock<std::recursive_mutex> guard;
    };

    /** For transports, whose handlers take a turn. */
    asio::io_context& context();

private:
    struct Backend;

    std::recursive_mutex lock; // guards everything below, the devices and the transports
    int depth = 0;             ///< of the turns
    std::vector<Device*> devices;
    std::unique_ptr<Backend> backend;
    std::thread thread;

    void advance();
    void setTimer();
};

/** Tells of each time that a descriptor can be read, within a turn, until it goes away, which takes a turn too. */
class Watch
{
public:
    Watch(Loop& loop, int descriptor, std::function<void()> readable);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    struct Waiting;
    std::shared_ptr<Waiting> waiting;
};

/** A device on the loop: every `->` takes a turn until the end of the expression. Any thread. */
template <typename Model>
class Live
{
public:
    template <typename... Arguments>
    explicit Live(Loop& loopToUse, Arguments&&... arguments)
        : loop(loopToUse)
        , model(std::forward<Arguments>(arguments)...)
    {
        if constexpr (std::is_base_of_v<Device, Model>)
            loop.add(model);
    }

    class Access
    {
    public:
        Access(Loop& loop, Model& modelToUse)
            : turn(loop)
            , model(modelToUse)
        {
        }
        Model* operator->() const { return &model; }
        Model& operator*() const { return model; }

    private:
        Loop::Turn turn;
        Model& model;
    };
    Access operator->() { return Access(loop, model); }
    /** One turn for several calls. Nothing in it may wait for the unit. */
    Access use() { return Access(loop, model); }
    /** For other devices, which are in a turn. */
    operator Model&() { return model; }

private:
    Loop& loop;
    Model model;
};

} // namespace Bench
