#include "bench/mcu/PseudoTerminal.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace Bench
{

PseudoTerminal::~PseudoTerminal()
{
    close();
}

std::string PseudoTerminal::open()
{
    close();
    termios raw {};
    ::cfmakeraw(&raw);
    std::array<char, 128> buffer {};
    if (::openpty(&master, &slave, buffer.data(), &raw, nullptr) != 0)
        return std::string("pseudo-terminal: ") + std::strerror(errno);
    for (const auto descriptor : { master, slave })
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    ::fcntl(master, F_SETFL, O_NONBLOCK);
    name = buffer.data();
    return {};
}

void PseudoTerminal::close()
{
    for (auto* descriptor : { &master, &slave })
        if (*descriptor >= 0)
            ::close(std::exchange(*descriptor, -1));
}

void PseudoTerminal::flush() const
{
    if (isOpen())
        ::tcflush(slave, TCIOFLUSH);
}

} // namespace Bench
