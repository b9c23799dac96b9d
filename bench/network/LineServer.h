#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace Bench
{

/**
    Serves lines of text on a TCP port of this machine alone, to any number of readers, and takes lines from each. A
    reader that does not keep up, or sends a line without an end, is dropped. Has a thread of its own, on which the
    handlers run; its operations may be called from any other.
*/
class LineServer
{
public:
    struct Handlers
    {
        std::function<void(const std::string& line)> received; ///< without its end
        std::function<void(const std::string& what)> failed;   ///< a reader was dropped, or none can come any more
    };

    LineServer() = default;
    ~LineServer();
    LineServer(const LineServer&) = delete;
    LineServer& operator=(const LineServer&) = delete;

    /** Port 0 takes any that is free. A server before ends. Empty on success, else what failed. */
    std::string listen(int port, Handlers handlers);
    /** No handler runs after it returns. What readers have not got yet is lost. */
    void close();
    /** To every reader; its end is added. Nothing when it does not listen. */
    void send(const std::string& line);

    /** 0 when it does not listen. */
    int port() const;
    unsigned readers() const;
    /** Readers dropped since it listens. */
    unsigned dropped() const;

    static constexpr std::size_t longestLine = 1024;
    static constexpr std::size_t longestBacklog = 256 * 1024; ///< bytes that wait for one reader

private:
    struct Running;
    mutable std::mutex lock; // guards the pointer
    std::shared_ptr<Running> running;

    std::shared_ptr<Running> current() const;
};

} // namespace Bench
