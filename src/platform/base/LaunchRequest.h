#pragma once

#include "platform/base/Descriptor.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace Platform
{

/**
    What the engine asks of `headunit-launch`, one request a connection (Unix SOCK_SEQPACKET), one packet of JSON: to start
    a program, {"path", "arguments": [], "environment": ["NAME=value"], "user"}, with the writing end of a pipe; to end one,
    {"end": true, "user"}, with its pidfd. `user` may be left out. The answer is a `LaunchAnswer`. The pipe ends when the
    process has become the program; the system's error number comes out of it (an `int`) when it has not. The connection
    cannot tell, as the service manager keeps it open as long as the program runs.
*/
struct LaunchRequest
{
    static constexpr std::size_t maxBytes = 128 * 1024;
    /** So long each side waits for the other's next packet. */
    static constexpr std::chrono::seconds patience { 5 };

    std::string path {};
    std::vector<std::string> arguments {};
    std::vector<std::string> environment {}; ///< "NAME=value", each valid UTF-8
    std::string user {};                     ///< empty = as the launcher has it
    bool ends = false;                       ///< end the process, which is all that is asked

    std::string toText() const;
    /** None when it has another form; `problem` says which. */
    static std::optional<LaunchRequest> parse(const std::string& text, std::string& problem);
};

/**
    {"pid": N} with the pidfd when the process is about to become the program, {"ended": true} when the process was ended,
    {"error": "..."} when not.
*/
struct LaunchAnswer
{
    int pid = 0;
    bool ended = false;
    std::string error {};

    std::string toText() const;
    /** One of another form is an error. */
    static LaunchAnswer parse(const std::string& text);
};

/** One packet, and the descriptor that came along. */
struct LaunchPacket
{
    std::string text; ///< empty = the other side has closed the connection
    Descriptor passed;

    /** The system's error number, 0 on success. Waits as long as the socket lets it. */
    static int send(int socket, const std::string& text, int passed = -1);
    /** The same; EMSGSIZE for a packet longer than a request may be. */
    int receive(int socket);
    /** From now on neither side of a call waits longer than `LaunchRequest::patience`. The same answer. */
    static int limitWaits(int socket);
};

} // namespace Platform
