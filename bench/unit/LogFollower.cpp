#include "bench/unit/LogFollower.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Bench
{

LogFollower::LogFollower(Loop& loopToUse, Journal& journalToUse, std::string streamToUse)
    : loop(loopToUse)
    , journal(journalToUse)
    , stream(std::move(streamToUse))
{
}

std::string LogFollower::start(const std::string& path, bool onlyNew)
{
    const Loop::Turn turn(loop);
    file = path;
    notifications = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    const auto folder = std::filesystem::path(path).parent_path();
    if (notifications < 0 ||
        ::inotify_add_watch(notifications, folder.c_str(), IN_MODIFY | IN_CREATE | IN_MOVED_TO) < 0)
        return path + ": " + std::strerror(errno);
    watch = std::make_unique<Watch>(loop, notifications,
                                    [this]
                                    {
                                        std::array<char, 4096> ignored {};
                                        while (::read(notifications, ignored.data(), ignored.size()) > 0)
                                        {
                                        }
                                        readNew();
                                    });
    if (onlyNew)
    {
        descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        ::lseek(descriptor, 0, SEEK_END); // nothing when there is no file yet
    }
    readNew();
    return {};
}

void LogFollower::stop()
{
    const Loop::Turn turn(loop);
    if (watch != nullptr)
        readNew();
    watch.reset();
    for (auto* each : { &notifications, &descriptor })
        if (*each >= 0)
            ::close(std::exchange(*each, -1));
}

void LogFollower::readNew()
{
    for (int pass = 0; pass < 2; ++pass) // the rest of the old file, then the one that took its place
    {
        if (descriptor < 0)
            descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        std::array<char, 4096> buffer {};
        ssize_t count = 0;
        while (descriptor >= 0 && (count = ::read(descriptor, buffer.data(), buffer.size())) > 0)
        {
            partial.append(buffer.data(), static_cast<std::size_t>(count));
            for (std::size_t end; (end = partial.find('\n')) != std::string::npos; partial.erase(0, end + 1))
                add(partial.substr(0, end));
        }
        reopenIfReplaced();
    }
}

void LogFollower::add(const std::string& line)
{
    heard(line);
    journal.add(stream, line);
    // "CurrShowPage : mbFM | CurrPageState : kAppShow": from now on the engine goes by this page's being there.
    const std::string before = "CurrShowPage : ", after = " | CurrPageState : kAppShow";
    const auto from = line.find(before);
    if (const auto to = line.find(after); from != std::string::npos && to != std::string::npos)
        journal.add("settled", line.substr(from + before.size(), to - from - before.size()));
}

void LogFollower::reopenIfReplaced()
{
    struct stat opened
    {
    }, named {};
    if (descriptor >= 0 && ::fstat(descriptor, &opened) == 0 && ::stat(file.c_str(), &named) == 0 &&
        (opened.st_ino != named.st_ino || named.st_size < ::lseek(descriptor, 0, SEEK_CUR)))
        ::close(std::exchange(descriptor, -1));
}

} // namespace Bench
