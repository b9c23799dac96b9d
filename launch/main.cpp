// Becomes the program that the engine asks for on the connection that is its standard input. The service manager runs one for
// each connection, so that the program is a service of its own and lives on when the engine ends.
#include "launch/User.h"
#include "platform/base/Execution.h"
#include "platform/base/LaunchRequest.h"
#include "platform/base/SignedProgram.h"
#include "platform/config/Configuration.h"
#include "platform/config/UpdateProgram.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <system_error>
// This header does not say by itself that its functions are C ones.
extern "C"
{
#include <sys/pidfd.h>
}

namespace
{

using Platform::Descriptor;
using Platform::LaunchAnswer;
using Platform::LaunchPacket;
using Platform::LaunchRequest;

std::string systemError(const std::string& what, int error = errno)
{
    return what + ": " + std::generic_category().message(error);
}

/** One line on standard error when the engine can not be told. */
int fail(int connection, const std::string& problem)
{
    if (LaunchPacket::send(connection, LaunchAnswer { .error = problem }.toText()) != 0)
        std::fprintf(stderr, "headunit-launch: %s\n", problem.c_str());
    return EXIT_FAILURE;
}

/**
    The update program runs as the superuser: what could make it load or run something else stays behind. The rest is
    the service manager's.
*/
std::vector<std::string> updateEnvironment(const std::vector<std::string>& asked)
{
    constexpr std::array passed { "DISPLAY=", "XAUTHORITY=", "LANG=", "HEADUNIT_BUS=", "DBUS_SESSION_BUS_ADDRESS=" };
    constexpr std::array own { "PATH=", "HOME=", "USER=", "LOGNAME=", "SHELL=" };
    const auto isOneOf = [](const auto& names, std::string_view variable)
    { return std::ranges::any_of(names, [&](const char* name) { return variable.starts_with(name); }); };
    std::vector<std::string> environment;
    for (const auto& each : asked)
        if (isOneOf(passed, each))
            environment.push_back(each);
    for (char** each = environ; *each != nullptr; ++each)
        if (isOneOf(own, *each))
            environment.emplace_back(*each);
    return environment;
}

/** Empty when the request may be done, and its user is who this process is then. */
std::string admit(LaunchRequest& request, const std::string& updateConfiguration)
{
    if (updateConfiguration.empty())
        return Launch::become(request.user, request.environment);
    if (request.ends || !request.user.empty())
        return "an update program is only started, and by no other user";
    if (auto problem = Platform::Configuration::load(updateConfiguration); !problem.empty())
        return problem;
    if (!Platform::updateProgramPaths().contains(juce::String::fromUTF8(request.path.c_str())))
        return "no update program lies there";
    request.environment = updateEnvironment(request.environment);
    return {};
}

int end(int connection, const Descriptor& process)
{
    // As the program's user: the system knows whether it is his.
    if (pidfd_send_signal(process.get(), SIGKILL, nullptr, 0) != 0 && errno != ESRCH)
        return fail(connection, systemError("cannot end it"));
    return LaunchPacket::send(connection, LaunchAnswer { .ended = true }.toText()) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

/** Answers only on failure. */
int start(int connection, const Descriptor& report, Platform::Execution execution)
{
    const int pid = getpid();
    const Descriptor process { pidfd_open(pid, 0) };
    if (!process)
        return fail(connection, systemError("pidfd"));
    // Who has gone does not know of the program, which must not run then.
    if (const int error = LaunchPacket::send(connection, LaunchAnswer { .pid = pid }.toText(), process.get());
        error != 0)
        return fail(connection, systemError("the answer", error));
    const int error = execution.run();
    return write(report.get(), &error, sizeof(error)) == sizeof(error)
               ? EXIT_FAILURE
               : fail(connection, systemError("execution", error));
}

/** The connection is kept beside standard input, which becomes empty. */
Descriptor takeConnection()
{
    constexpr int firstFree = 3;
    Descriptor connection { fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, firstFree) };
    const Descriptor nothing { open("/dev/null", O_RDONLY | O_CLOEXEC) };
    if (!nothing || dup2(nothing.get(), STDIN_FILENO) != STDIN_FILENO)
        connection.reset();
    return connection;
}

/** With the engine's configuration an update program is started, without it a source program is started or ended. */
int serve(const std::string& updateConfiguration)
{
    const auto connection = takeConnection();
    LaunchPacket packet;
    int error = connection ? LaunchPacket::limitWaits(connection.get()) : errno;
    error = error != 0 ? error : packet.receive(connection.get());
    if (error != 0)
        return fail(connection.get(), systemError("the request", error));

    std::string problem;
    auto request = LaunchRequest::parse(packet.text, problem);
    if (!request)
        return fail(connection.get(), problem);
    if (!packet.passed)
        return fail(connection.get(), "the request comes without a descriptor");
    if (problem = admit(*request, updateConfiguration); !problem.empty())
        return fail(connection.get(), problem);
    if (request->ends)
        return end(connection.get(), packet.passed);

    Platform::SignedProgram program; // No keys are configured for source programs.
    if (const auto& keys = Platform::Configuration::get().updateKeys; keys.isNotEmpty())
        program = Platform::SignedProgram::open(request->path, keys.toStdString());
    if (!program.refusal.empty())
        return fail(connection.get(), program.refusal);
    return start(connection.get(), packet.passed,
                 { std::move(request->path), std::move(request->arguments), std::move(request->environment),
                   std::move(program.content) });
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App arguments { "Starts one program for the head unit's engine, which asks for it on standard input.",
                         "headunit-launch" };
    std::string configurationFile = "/etc/headunit/engine.toml";
    bool update = false;
    arguments.add_option("--config", configurationFile, "the engine's configuration file, read for an update")
        ->capture_default_str();
    arguments.add_flag("--update", update, "start the update program of a medium, and nothing else");
    arguments.set_version_flag("--version", std::string("headunit-launch ") + HEADUNIT_VERSION);
    CLI11_PARSE(arguments, argc, argv);
    return serve(update ? configurationFile : std::string());
}
