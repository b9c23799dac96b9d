#pragma once

#include "bench/unit/Loop.h"

#include <set>

namespace Bench
{

/**
    Serves lines of text on a TCP port of this machine alone, to any number of readers, and takes lines from each. A
    reader that does not keep up, or sends a line without an end, is dropped. On the loop.
*/
class LineServer
{
public:
    struct Handlers
    {
        /** Without its end. What it returns is sent to this reader alone; "" is nothing. */
        std::function<std::string(const std::string& line)> received;
        std::function<void(const std::string& what)> failed; ///< a reader was dropped, or none can come any more
    };

    explicit LineServer(Loop& loopToUse)
        : loop(loopToUse)
    {
    }
    ~LineServer() { close(); }
    LineServer(const LineServer&) = delete;
    LineServer& operator=(const LineServer&) = delete;

    /** Port 0 means any free port. An earlier server ends, unless this one fails. Empty on success, else what failed. */
    std::string listen(int port, Handlers handlers);
    /** What readers have not got yet is lost. */
    void close();
    /** Sends the line, with its end added, to every reader. Does nothing when the server does not listen. */
    void send(const std::string& line);

    /** 0 when it does not listen. */
    int port() const { return boundPort; }
    unsigned readers() const { return static_cast<unsigned>(all.size()); }
    /** Readers dropped since it listens. */
    unsigned dropped() const { return droppedReaders; }

    static constexpr std::size_t longestLine = 1024;
    static constexpr std::size_t longestBacklog = 256 * 1024; ///< bytes that wait for one reader

private:
    struct Acceptor;
    struct Reader;
    using ReaderPtr = std::shared_ptr<Reader>;

    Loop& loop;
    Handlers handlers;
    std::shared_ptr<Acceptor> acceptor;
    std::set<ReaderPtr> all;
    int boundPort = 0;
    unsigned droppedReaders = 0;

    void accept();
    void read(const ReaderPtr& reader);
    void send(const ReaderPtr& reader, const std::string& line);
    void write(const ReaderPtr& reader);
    void forget(const ReaderPtr& reader);
    void drop(const ReaderPtr& reader, const char* why);
};

} // namespace Bench
