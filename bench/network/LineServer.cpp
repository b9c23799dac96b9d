#if defined(__SANITIZE_THREAD__)
// Fences of Asio's completion handlers, which the sanitizer does not follow: one thread runs them all. The setting
// counts where the fence stands, so it comes before the headers.
#pragma GCC diagnostic ignored "-Wtsan"
#endif

#include "bench/network/LineServer.h"

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <atomic>
#include <deque>
#include <set>
#include <thread>
#include <utility>

namespace Bench
{

using asio::ip::tcp;
using SharedLine = std::shared_ptr<const std::string>;

/** Everything but the counters is touched on the server's thread alone. */
struct LineServer::Running
{
    struct Reader
    {
        explicit Reader(tcp::socket socketToUse)
            : socket(std::move(socketToUse))
        {
        }
        tcp::socket socket;
        std::string input;
        std::deque<SharedLine> output;
        std::size_t backlog = 0;
    };
    using ReaderPtr = std::shared_ptr<Reader>;

    explicit Running(Handlers handlersToCall)
        : handlers(std::move(handlersToCall))
    {
    }

    Handlers handlers;
    asio::io_context context { 1 };
    tcp::acceptor acceptor { context };
    std::set<ReaderPtr> readers;
    std::atomic<unsigned> count { 0 }, dropped { 0 };
    std::atomic<int> port { 0 };
    std::thread thread;

    std::string open(int wantedPort)
    {
        const tcp::endpoint where(asio::ip::address_v4::loopback(), static_cast<asio::ip::port_type>(wantedPort));
        asio::error_code error;
        if (acceptor.open(where.protocol(), error) || acceptor.set_option(tcp::acceptor::reuse_address(true), error) ||
            acceptor.bind(where, error) || acceptor.listen(tcp::acceptor::max_listen_connections, error))
            return "port " + std::to_string(wantedPort) + ": " + error.message();
        const auto bound = acceptor.local_endpoint(error);
        if (error)
            return "port " + std::to_string(wantedPort) + ": " + error.message();
        port = bound.port();
        return {};
    }

    void accept()
    {
        acceptor.async_accept(
            [this](asio::error_code error, tcp::socket socket)
            {
                if (error)
                    return handlers.failed("no reader can come any more: " + error.message());
                const auto reader = std::make_shared<Reader>(std::move(socket));
                readers.insert(reader);
                count = static_cast<unsigned>(readers.size());
                read(reader);
                accept();
            });
    }

    void read(const ReaderPtr& reader)
    {
        asio::async_read_until(reader->socket, asio::dynamic_buffer(reader->input, longestLine), '\n',
                               [this, reader](asio::error_code error, std::size_t size)
                               {
                                   if (error == asio::error::not_found)
                                       return drop(reader, "it sends a line without an end");
                                   if (error)
                                       return forget(reader);
                                   const auto line = reader->input.substr(0, size - 1);
                                   reader->input.erase(0, size);
                                   handlers.received(line);
                                   read(reader);
                               });
    }

    void put(const ReaderPtr& reader, const SharedLine& line)
    {
        reader->backlog += line->size();
        if (reader->backlog > longestBacklog)
            return drop(reader, "it does not read");
        reader->output.push_back(line);
        if (reader->output.size() == 1)
            write(reader);
    }

    void write(const ReaderPtr& reader)
    {
        asio::async_write(reader->socket, asio::buffer(*reader->output.front()),
                          [this, reader](asio::error_code error, std::size_t size)
                          {
                              if (error)
                                  return forget(reader);
                              reader->backlog -= size;
                              reader->output.pop_front();
                              if (!reader->output.empty())
                                  write(reader);
                          });
    }

    void forget(const ReaderPtr& reader)
    {
        asio::error_code ignored; // it goes away in any case
        reader->socket.close(ignored);
        readers.erase(reader);
        count = static_cast<unsigned>(readers.size());
    }

    void drop(const ReaderPtr& reader, const char* why)
    {
        forget(reader);
        ++dropped;
        handlers.failed(std::string("a reader was dropped: ") + why);
    }

    void sendToAll(const SharedLine& line)
    {
        const auto all = readers; // one that is dropped leaves the set
        for (const auto& reader : all)
            put(reader, line);
    }
};

LineServer::~LineServer()
{
    close();
}

std::string LineServer::listen(int port, Handlers handlers)
{
    close();
    const auto next = std::make_shared<Running>(std::move(handlers));
    if (auto error = next->open(port); !error.empty())
        return error;
    next->accept();
    next->thread = std::thread([&context = next->context] { context.run(); });
    const std::scoped_lock guard(lock);
    running = next;
    return {};
}

void LineServer::close()
{
    std::shared_ptr<Running> ending;
    {
        const std::scoped_lock guard(lock);
        ending = std::exchange(running, nullptr);
    }
    if (!ending)
        return;
    ending->context.stop();
    ending->thread.join();
}

void LineServer::send(const std::string& line)
{
    const auto server = current();
    if (!server)
        return;
    asio::post(server->context, [server = server.get(), shared = std::make_shared<const std::string>(line + "\n")]
               { server->sendToAll(shared); });
}

int LineServer::port() const
{
    const auto server = current();
    return server ? server->port.load() : 0;
}

unsigned LineServer::readers() const
{
    const auto server = current();
    return server ? server->count.load() : 0;
}

unsigned LineServer::dropped() const
{
    const auto server = current();
    return server ? server->dropped.load() : 0;
}

std::shared_ptr<LineServer::Running> LineServer::current() const
{
    const std::scoped_lock guard(lock);
    return running;
}

} // namespace Bench
