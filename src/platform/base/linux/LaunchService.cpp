#include "platform/base/linux/LaunchService.h"

#include "platform/base/LaunchRequest.h"
#include "platform/channel/linux/IpcSdBus.h"
#include "platform/config/Configuration.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>
// This header does not say by itself that its functions are C ones.
extern "C"
{
#include <sys/pidfd.h>
}

namespace Platform
{

namespace
{

/** Of this service alone (systemd.exec): another program must not answer to its service manager in our name. */
constexpr std::array ownVariables { "NOTIFY_SOCKET",        "WATCHDOG_PID",      "WATCHDOG_USEC",
                                    "LISTEN_PID",           "LISTEN_FDS",        "LISTEN_FDNAMES",
                                    "INVOCATION_ID",        "JOURNAL_STREAM",    "MANAGERPID",
                                    "SYSTEMD_EXEC_PID",     "RUNTIME_DIRECTORY", "STATE_DIRECTORY",
                                    "CACHE_DIRECTORY",      "LOGS_DIRECTORY",    "CONFIGURATION_DIRECTORY",
                                    "CREDENTIALS_DIRECTORY" };
constexpr std::array busVariables { "HEADUNIT_BUS", "DBUS_SESSION_BUS_ADDRESS" };

std::string systemError(const std::string& what, int error)
{
    return what + ": " + std::generic_category().message(error);
}

/** A connection of bounded waits. Empty on success, else what failed. */
std::string connectTo(const juce::String& path, Descriptor& connection)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (path.getNumBytesAsUTF8() >= sizeof(address.sun_path))
        return path.toStdString() + ": the path is too long for a socket";
    path.copyToUTF8(address.sun_path, sizeof(address.sun_path));
    connection.reset(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    int error = connection ? LaunchPacket::limitWaits(connection.get()) : errno;
    if (error == 0 && ::connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        error = errno;
    return error == 0 ? "" : systemError(path.toStdString(), error);
}

struct Reply
{
    LaunchAnswer answer {};
    Descriptor passed {};
    Descriptor connection {};
};

/** The answer to one request that goes with a descriptor. */
Reply ask(const juce::String& socket, const LaunchRequest& request, int passed)
{
    Reply reply;
    LaunchPacket packet;
    auto& problem = reply.answer.error;
    if (problem = connectTo(socket, reply.connection); !problem.empty())
        return reply;
    if (const int error = LaunchPacket::send(reply.connection.get(), request.toText(), passed); error != 0)
        problem = systemError("the request to the launcher", error);
    else if (const int failure = packet.receive(reply.connection.get()); failure != 0)
        problem = systemError("the answer of the launcher", failure);
    else if (packet.text.empty())
        problem = "the launcher has ended without an answer";
    else
        reply.answer = LaunchAnswer::parse(packet.text);
    reply.passed = std::move(packet.passed);
    return reply;
}

/**
    Waits until the service of a launch that failed is gone: the next one would be refused until then, or lose what
    belongs to both.
*/
void awaitEnd(const Descriptor& connection)
{
    LaunchPacket().receive(connection.get());
}

/** What kept the process from becoming the program; empty when the pipe has ended, so that it became it. */
std::string outcomeOf(int report, int pidfd)
{
    constexpr auto limit = std::chrono::milliseconds(LaunchRequest::patience).count();
    pollfd waiting { report, POLLIN, 0 };
    int answer = 0;
    while ((answer = poll(&waiting, 1, static_cast<int>(limit))) < 0 && errno == EINTR)
    {
    }
    int error = answer < 0 ? errno : 0;
    if (answer > 0)
        return ::read(report, &error, sizeof(error)) == sizeof(error) ? std::generic_category().message(error) : "";
    // It must not become the program any more.
    const auto notEnded = LaunchService::end(pidfd);
    return std::generic_category().message(answer < 0 ? error : ETIMEDOUT) +
           (notEnded.empty() ? "" : " (it cannot be ended: " + notEnded + ")");
}

} // namespace

LaunchService::Started LaunchService::start(const juce::String& socket, const juce::String& user,
                                            const juce::String& path, const juce::StringArray& arguments)
{
    LaunchRequest request { .path = path.toStdString(), .environment = environment(), .user = user.toStdString() };
    for (const auto& argument : arguments)
        request.arguments.push_back(argument.toStdString());
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) < 0)
        return { .error = systemError("pipe", errno) };
    const Descriptor report { ends[0] };
    Descriptor launcherReport { ends[1] };

    auto reply = ask(socket, request, launcherReport.get());
    launcherReport.reset();
    auto& problem = reply.answer.error;
    if (problem.empty() && (reply.answer.pid == 0 || !reply.passed))
        problem = "the answer of the launcher names no process";
    if (problem.empty())
        problem = outcomeOf(report.get(), reply.passed.get());
    if (!problem.empty())
        awaitEnd(reply.connection);
    return { reply.answer.pid, std::move(reply.passed), std::move(problem) };
}

std::string LaunchService::end(int pidfd)
{
    if (pidfd_send_signal(pidfd, SIGKILL, nullptr, 0) == 0 || errno == ESRCH)
        return {};
    const int error = errno;
    const auto& configuration = Configuration::get();
    if (error != EPERM || configuration.launchSocket.isEmpty())
        return std::generic_category().message(error);
    const LaunchRequest request { .user = configuration.launchUser.toStdString(), .ends = true };
    return ask(configuration.launchSocket, request, pidfd).answer.error;
}

std::vector<std::string> LaunchService::environment()
{
    const auto bus = withoutIdentity(Configuration::get().ipcAddress.toStdString());
    const auto isReplaced = [&](const std::string& name)
    {
        return std::ranges::find(ownVariables, name) != ownVariables.end() ||
               (!bus.empty() && std::ranges::find(busVariables, name) != busVariables.end());
    };
    std::vector<std::string> variables;
    for (char** each = environ; each != nullptr && *each != nullptr; ++each)
    {
        const std::string variable = *each;
        const auto nameEnd = variable.find('=');
        // Whoever starts the engine may set what is no UTF-8, which no request can hold.
        if (nameEnd != std::string::npos && nameEnd > 0 && !isReplaced(variable.substr(0, nameEnd)) &&
            juce::CharPointer_UTF8::isValidString(variable.c_str(), static_cast<int>(variable.size())))
            variables.push_back(variable);
    }
    if (!bus.empty())
        for (const auto* name : busVariables)
            variables.push_back(std::string(name) + "=" + bus);
    return variables;
}

} // namespace Platform
