#include "app/TerminationSignal.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{

int pipeEnds[2] = { -1, -1 };

extern "C" void writeToPipe(int)
{
    const int savedError = errno;
    const char byte = 0;
    // A full pipe holds a request already.
    [[maybe_unused]] const auto written = write(pipeEnds[1], &byte, 1);
    errno = savedError;
}

} // namespace

void TerminationSignal::catchEarly()
{
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
    {
        std::perror("headunit-engine: no orderly end by a signal");
        return;
    }
    struct sigaction action
    {
    };
    action.sa_handler = writeToPipe;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

TerminationSignal::TerminationSignal()
{
    juce::LinuxEventLoop::registerFdCallback(pipeEnds[0],
                                             [](int descriptor)
                                             {
                                                 char bytes[16];
                                                 while (read(descriptor, bytes, sizeof(bytes)) > 0)
                                                 {
                                                 }
                                                 if (auto* application = juce::JUCEApplicationBase::getInstance())
                                                     application->systemRequestedQuit();
                                             });
}

TerminationSignal::~TerminationSignal()
{
    juce::LinuxEventLoop::unregisterFdCallback(pipeEnds[0]);
}
