#if defined(__SANITIZE_THREAD__)
// Fences of Asio's completion handlers, which the sanitizer does not follow: one thread runs them all. The setting
// counts where the fence stands, so it comes before the headers.
#pragma GCC diagnostic ignored "-Wtsan"
#endif

#include "bench/unit/LineServer.h"

#include <array>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <utility>

namespace Bench
{

using asio::ip::tcp;

struct LineServer::Acceptor : tcp::acceptor
{
    using tcp::acceptor::acceptor;
};

struct LineServer::Reader
{
    explicit Reader(tcp::socket socketToUse)
        : socket(std::move(socketToUse))
    {
    }
    tcp::socket socket;
    std::array<char, longestLine> chunk {};
    std::string input;
    std::deque<std::string> output;
    std::size_t backlog = 0;
};

std::string LineServer::listen(int port, Handlers handlersToCall)
{
    if (port == boundPort)
        close(); // its own port is to be had again
    auto next = std::make_shared<Acceptor>(loop.context());
    const tcp::endpoint where(asio::ip::address_v4::loopback(), static_cast<asio::ip::port_type>(port));
    asio::error_code error;
    tcp::endpoint bound;
    if (next->open(where.protocol(), error) || next->set_option(tcp::acceptor::reuse_address(true), error) ||
        next->bind(where, error) || next->listen(tcp::acceptor::max_listen_connections, error) ||
        (bound = next->local_endpoint(error), error))
        return "port " + std::to_string(port) + ": " + error.message();
    close();
    handlers = std::move(handlersToCall);
    acceptor = next;
    boundPort = bound.port();
    droppedReaders = 0;
    accept();
    return {};
}

void LineServer::close()
{
    for (const auto readers = all; const auto& reader : readers)
        forget(reader);
    acceptor.reset();
    boundPort = 0;
}

void LineServer::accept()
{
    // The handlers outlive what they serve: each looks whether that is still there before it touches the server.
    acceptor->async_accept(
        [this, &turns = loop, listening = std::weak_ptr(acceptor)](asio::error_code error, tcp::socket socket)
        {
            const Loop::Turn turn(turns);
            if (listening.expired())
                return;
            if (error)
                return handlers.failed("no reader can come any more: " + error.message());
            read(*all.insert(std::make_shared<Reader>(std::move(socket))).first);
            accept();
        });
}

// Reads and writes some, never a whole: only then every step that touches the socket is within a turn.
void LineServer::read(const ReaderPtr& reader)
{
    reader->socket.async_read_some(asio::buffer(reader->chunk),
                                   [this, &turns = loop, reader](asio::error_code error, std::size_t size)
                                   {
                                       const Loop::Turn turn(turns);
                                       if (!reader->socket.is_open())
                                           return;
                                       if (error)
                                           return forget(reader);
                                       reader->input.append(reader->chunk.data(), size);
                                       for (std::size_t end; (end = reader->input.find('\n')) != std::string::npos;)
                                       {
                                           const auto answer = handlers.received(reader->input.substr(0, end));
                                           reader->input.erase(0, end + 1);
                                           if (!answer.empty())
                                               send(reader, answer);
                                           if (!reader->socket.is_open())
                                               return; // dropped, as it does not read what it is answered
                                       }
                                       if (reader->input.size() >= longestLine)
                                           return drop(reader, "it sends a line without an end");
                                       read(reader);
                                   });
}

void LineServer::send(const std::string& line)
{
    for (const auto readers = all; const auto& reader : readers) // one that is dropped leaves the set
        send(reader, line);
}

void LineServer::send(const ReaderPtr& reader, const std::string& line)
{
    reader->backlog += line.size() + 1;
    reader->output.push_back(line + "\n");
    if (reader->backlog > longestBacklog)
        drop(reader, "it does not read");
    else if (reader->output.size() == 1)
        write(reader);
}

void LineServer::write(const ReaderPtr& reader)
{
    reader->socket.async_write_some(asio::buffer(reader->output.front()),
                                    [this, &turns = loop, reader](asio::error_code error, std::size_t size)
                                    {
                                        const Loop::Turn turn(turns);
                                        if (!reader->socket.is_open())
                                            return;
                                        if (error)
                                            return forget(reader);
                                        reader->backlog -= size;
                                        auto& front = reader->output.front();
                                        front.erase(0, size);
                                        if (front.empty())
                                            reader->output.pop_front();
                                        if (!reader->output.empty())
                                            write(reader);
                                    });
}

void LineServer::forget(const ReaderPtr& reader)
{
    asio::error_code ignored; // it goes away in any case
    reader->socket.close(ignored);
    all.erase(reader);
}

void LineServer::drop(const ReaderPtr& reader, const char* why)
{
    forget(reader);
    ++droppedReaders;
    handlers.failed(std::string("a reader was dropped: ") + why);
}

} // namespace Bench
