#include "bench/remote/WiredRemote.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace Bench
{

namespace
{

constexpr std::array keyTable {
    WiredRemote::Key { "pre", 0xA1 },        WiredRemote::Key { "next", 0xA2 },
    WiredRemote::Key { "playpause", 0xA3 },  WiredRemote::Key { "return", 0xA4 },
    WiredRemote::Key { "favorites", 0xA5 },  WiredRemote::Key { "source", 0xA6 },
    WiredRemote::Key { "enter", 0xA7 },      WiredRemote::Key { "pre-long", 0xA8 },
    WiredRemote::Key { "next-long", 0xA9 },  WiredRemote::Key { "off", 0xAB },
    WiredRemote::Key { "ams1", 0xAC },       WiredRemote::Key { "menu", 0xAD },
    WiredRemote::Key { "rotary-pre", 0xAE }, WiredRemote::Key { "rotary-next", 0xAF },
};

} // namespace

std::span<const WiredRemote::Key> WiredRemote::keys()
{
    return keyTable;
}

std::optional<std::uint8_t> WiredRemote::findKey(const std::string& name)
{
    const auto found = std::find_if(keyTable.begin(), keyTable.end(), [&](auto& key) { return name == key.name; });
    return found != keyTable.end() ? std::optional(found->byte) : std::nullopt;
}

WiredRemote::WiredRemote(Journal& journalToUse)
    : journal(journalToUse)
{
}

WiredRemote::~WiredRemote()
{
    stop();
}

std::string WiredRemote::start(const std::string& linkPath)
{
    link = linkPath;
    wakeUp = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeUp < 0)
        return std::string("eventfd: ") + std::strerror(errno);
    if (auto error = plug(); !error.empty())
        return error;
    stopping = false;
    thread = std::thread([this] { run(); });
    return {};
}

void WiredRemote::stop()
{
    if (thread.joinable())
    {
        stopping = true;
        wake();
        thread.join();
    }
    line.close();
    if (wakeUp >= 0)
        ::close(std::exchange(wakeUp, -1));
}

void WiredRemote::wake() const
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(wakeUp, &one, sizeof one);
}

std::string WiredRemote::plug()
{
    const std::scoped_lock guard(lock);
    if (line.isOpen())
        return {};
    if (auto error = line.open(); !error.empty())
        return error;
    shown = {}; // its memory is lost with the power
    std::error_code error;
    std::filesystem::remove(link, error);
    std::filesystem::create_symlink(line.path(), link, error);
    if (error)
        return link + ": " + error.message();
    journal.add("remote", "plugged");
    wake();
    return {};
}

void WiredRemote::unplug()
{
    const std::scoped_lock guard(lock);
    if (!line.isOpen())
        return;
    std::error_code ignored;
    std::filesystem::remove(link, ignored);
    line.close();
    held.reset();
    journal.add("remote", "unplugged");
    wake();
}

bool WiredRemote::isPlugged() const
{
    const std::scoped_lock guard(lock);
    return line.isOpen();
}

void WiredRemote::stall(bool on)
{
    const std::scoped_lock guard(lock);
    stalled = on;
    wake();
}

RemoteDisplay WiredRemote::display() const
{
    const std::scoped_lock guard(lock);
    return shown;
}

bool WiredRemote::sendBytes(std::span<const std::uint8_t> bytes)
{
    const std::scoped_lock guard(lock);
    return write(bytes);
}

void WiredRemote::hold(std::uint8_t key, Milliseconds duration)
{
    const std::scoped_lock guard(lock);
    const auto now = Clock::now();
    held = { key, now, now + duration };
    wake();
}

bool WiredRemote::write(std::span<const std::uint8_t> bytes)
{
    return line.isOpen() &&
           ::write(line.descriptor(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

int WiredRemote::untilNextRepeat() const
{
    if (!held)
        return -1;
    const auto left = std::chrono::ceil<Milliseconds>(held->next - Clock::now());
    return std::max(0, static_cast<int>(left.count()));
}

void WiredRemote::run()
{
    while (!stopping)
    {
        std::array<pollfd, 2> waiting { { { wakeUp, POLLIN, 0 }, { -1, POLLIN, 0 } } };
        int limit = -1;
        {
            const std::scoped_lock guard(lock);
            if (!stalled)
                waiting[1].fd = line.descriptor();
            limit = untilNextRepeat();
        }
        ::poll(waiting.data(), waiting.size(), limit);
        std::uint64_t count = 0;
        if (waiting[0].revents != 0) [[maybe_unused]]
            const auto size = ::read(wakeUp, &count, sizeof count);
        const std::scoped_lock guard(lock);
        repeatHeldKey();
        // The line may have been changed meanwhile; then there is nothing to read, or it is found on the next turn.
        if (!stalled && line.isOpen())
            read();
    }
}

void WiredRemote::read()
{
    std::array<std::uint8_t, 512> buffer {};
    for (ssize_t count = 0; (count = ::read(line.descriptor(), buffer.data(), buffer.size())) > 0;)
        for (ssize_t i = 0; i < count; ++i)
            take(buffer[static_cast<std::size_t>(i)]);
}

void WiredRemote::take(std::uint8_t byte)
{
    const auto dimmers = [this] { return std::pair(shown.dimmerA(), shown.dimmerB()); };
    const auto before = dimmers();
    switch (shown.take(byte))
    {
    case RemoteDisplay::Change::none:
        break;
    case RemoteDisplay::Change::display:
        journal.add("remote display", shown.text());
        break;
    case RemoteDisplay::Change::dimmer:
        // The unit repeats its levels every two seconds; only a change is worth a line.
        if (shown.dimmerA() != before.first)
            journal.add("remote dimmer", "A " + std::to_string(*shown.dimmerA()));
        if (shown.dimmerB() != before.second)
            journal.add("remote dimmer", "B " + std::to_string(*shown.dimmerB()));
        break;
    case RemoteDisplay::Change::damage:
        journal.add("remote", "damaged");
        break;
    }
}

void WiredRemote::repeatHeldKey()
{
    const auto now = Clock::now();
    if (!held || held->next > now)
        return;
    if (now >= held->end)
    {
        held.reset();
        return;
    }
    write(std::span(&held->key, 1));
    held->next += repeatEvery;
}

} // namespace Bench
