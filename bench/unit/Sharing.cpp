#include "bench/unit/Sharing.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace Bench
{

namespace fs = std::filesystem;

namespace
{

std::string giveTo(const fs::path& folder, const std::string& file, mode_t mode)
{
    constexpr auto sameOwner = static_cast<uid_t>(-1);
    struct stat shared
    {
    };
    if (::stat(folder.c_str(), &shared) != 0 || ::chown(file.c_str(), sameOwner, shared.st_gid) != 0 ||
        ::chmod(file.c_str(), mode) != 0)
        return file + ": cannot be given to the group of " + folder.string() + ": " + std::strerror(errno);
    return {};
}

} // namespace

std::string shareWith(const fs::path& folder, const std::string& file)
{
    constexpr mode_t readAndWrite = 0660;
    return giveTo(folder, file, readAndWrite);
}

std::string MadeFiles::folder(const fs::path& path, const fs::path& like)
{
    constexpr mode_t enter = 0750;
    std::error_code error;
    if (fs::is_directory(path, error))
        return {};
    if (auto above = path.has_relative_path() ? folder(path.parent_path(), like) : path.string(); !above.empty())
        return above;
    if (!fs::create_directory(path, error))
        return path.string() + ": " + (error ? error.message() : "is no folder");
    made.push_back(path);
    return giveTo(like.empty() ? path.parent_path() : like, path, enter);
}

std::string MadeFiles::file(const fs::path& path)
{
    if (!std::ofstream(path, std::ios::trunc))
        return path.string() + ": cannot be written";
    made.push_back(path);
    return shareWith(path.parent_path(), path);
}

std::string MadeFiles::link(const fs::path& target, const fs::path& path)
{
    std::error_code error;
    if (fs::is_symlink(path, error))
        fs::remove(path, error);
    fs::create_symlink(target, path, error);
    if (error)
        return path.string() + ": " + error.message();
    made.push_back(path);
    return {};
}

void MadeFiles::removeAll()
{
    for (; !made.empty(); made.pop_back())
    {
        std::error_code isNotEmpty;
        fs::remove(made.back(), isNotEmpty);
    }
}

} // namespace Bench
