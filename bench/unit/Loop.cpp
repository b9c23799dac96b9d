#if defined(__SANITIZE_THREAD__)
// Fences of Asio's completion handlers, which the sanitizer does not follow: one thread runs them all. The setting
// counts where the fence stands, so it comes before the headers.
#pragma GCC diagnostic ignored "-Wtsan"
#endif

#include "bench/unit/Loop.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>

namespace Bench
{

struct Loop::Backend
{
    asio::io_context context;
    asio::steady_timer timer { context };
};

Loop::Loop()
    : backend(std::make_unique<Backend>())
{
}

Loop::~Loop()
{
    stop();
}

asio::io_context& Loop::context()
{
    return backend->context;
}

void Loop::start()
{
    context().restart();
    thread = std::thread(
        [this]
        {
            const auto work = asio::make_work_guard(context());
            context().run();
        });
}

void Loop::stop()
{
    context().stop();
    if (thread.joinable())
        thread.join();
}

void Loop::advance()
{
    const auto now = Clock::now();
    for (auto* device : devices)
        device->advance(now);
}

void Loop::setTimer()
{
    std::optional<Clock::time_point> next;
    for (const auto* device : devices)
        if (const auto due = device->due(); due && (!next || *due < *next))
            next = due;
    auto& timer = backend->timer;
    if (!next)
        timer.cancel();
    else if (timer.expires_at(*next); true)
        timer.async_wait(
            [this](asio::error_code error)
            {
                if (!error)
                    const Turn turn(*this);
            });
}

Loop::Turn::Turn(Loop& loopToUse)
    : loop(loopToUse)
    , guard(loop.lock)
{
    if (loop.depth++ == 0)
        loop.advance();
}

Loop::Turn::~Turn()
{
    if (loop.depth == 1)
    {
        loop.advance();
        loop.setTimer();
    }
    --loop.depth;
}

struct Watch::Waiting : std::enable_shared_from_this<Waiting>
{
    Waiting(Loop& loopToUse, int descriptorToWatch, std::function<void()> handler)
        : loop(loopToUse)
        , descriptor(loop.context(), descriptorToWatch)
        , readable(std::move(handler))
    {
    }

    Loop& loop;
    asio::posix::stream_descriptor descriptor;
    std::function<void()> readable;

    void wait()
    {
        descriptor.async_wait(asio::posix::stream_descriptor::wait_read,
                              [self = shared_from_this()](asio::error_code error)
                              {
                                  const Loop::Turn turn(self->loop);
                                  if (error || !self->descriptor.is_open())
                                      return;
                                  self->readable();
                                  if (self->descriptor.is_open())
                                      self->wait();
                              });
    }
};

Watch::Watch(Loop& loop, int descriptor, std::function<void()> readable)
    : waiting(std::make_shared<Waiting>(loop, descriptor, std::move(readable)))
{
    waiting->wait();
}

Watch::~Watch()
{
    waiting->descriptor.release(); // its owner closes it
}

} // namespace Bench
