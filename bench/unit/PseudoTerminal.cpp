#include "bench/unit/PseudoTerminal.h"

#include "bench/unit/Sharing.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <pty.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace Bench
{

namespace fs = std::filesystem;

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
    setReading(reading);
    if (link.empty())
        return {};
    const auto folder = fs::path(link).parent_path();
    std::error_code error;
    // Another terminal gets the number when this one is gone, however the bench ends. So where nobody else has to come in, the
    // link leads through this process, and is dead without it.
    const bool isPrivate = (fs::status(folder, error).permissions() & fs::perms::group_all) == fs::perms::none;
    const auto target = isPrivate ? "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(slave) : name;
    fs::remove(link, error);
    fs::create_symlink(target, link, error);
    if (error)
        return link + ": " + error.message();
    return isPrivate ? "" : shareWith(folder, name);
}

void PseudoTerminal::close()
{
    if (!isOpen())
        return;
    std::error_code ignored;
    if (!link.empty())
        fs::remove(link, ignored);
    watch.reset();
    for (auto* descriptor : { &master, &slave })
        ::close(std::exchange(*descriptor, -1));
}

bool PseudoTerminal::write(std::span<const std::uint8_t> bytes)
{
    return isOpen() && ::write(master, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

void PseudoTerminal::setReading(bool on)
{
    reading = on;
    if (!isOpen() || !reading)
        watch.reset();
    else if (watch == nullptr)
        watch = std::make_unique<Watch>(loop, master, [this] { read(); });
}

void PseudoTerminal::read()
{
    std::array<std::uint8_t, 512> buffer {};
    for (ssize_t count = 0; reading && (count = ::read(master, buffer.data(), buffer.size())) > 0;)
        received({ buffer.data(), static_cast<std::size_t>(count) });
}

void PseudoTerminal::flush()
{
    if (isOpen())
        ::tcflush(slave, TCIOFLUSH);
}

} // namespace Bench
