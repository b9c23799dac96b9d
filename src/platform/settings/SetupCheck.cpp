#include "platform/settings/SetupCheck.h"

#include "platform/base/Descriptor.h"
#include "platform/base/Logger.h"
#include "platform/settings/SetupEnvironment.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/SetupCheck", "SetupStore" };

/** How the child ends. A fault is damage as well. */
enum Verdict : int { sound = 0, damaged = 1, unknown = 2 };

using Content = std::map<std::string, std::string>;

std::string bytesOf(const MDB_val& value)
{
    return { static_cast<const char*>(value.mv_data), value.mv_size };
}

/** Every value, each of which must also be found by its key. */
int readAll(MDB_txn* transaction, MDB_dbi database, Content& content)
{
    constexpr std::size_t keyBytes = 4;
    MDB_cursor* cursor = nullptr;
    int result = mdb_cursor_open(transaction, database, &cursor);
    MDB_val key {}, value {}, found {};
    while (result == MDB_SUCCESS && (result = mdb_cursor_get(cursor, &key, &value, MDB_NEXT)) == MDB_SUCCESS)
    {
        // Pages that name each other in a circle come to keys that were there before.
        const bool follows = content.empty() || content.rbegin()->first < bytesOf(key);
        const bool isKey = key.mv_size == keyBytes && follows;
        result = isKey ? mdb_get(transaction, database, &key, &found) : MDB_CORRUPTED;
        if (result == MDB_SUCCESS && (found.mv_data != value.mv_data || found.mv_size != value.mv_size))
            result = MDB_CORRUPTED;
        if (result == MDB_SUCCESS)
            content[bytesOf(key)] = bytesOf(value);
    }
    return result == MDB_NOTFOUND ? MDB_SUCCESS : result;
}

/** Reads everything in a transaction of its own; a store without any database yet is empty. */
int readStore(MDB_env* environment, MDB_dbi& database, Content& content)
{
    content.clear();
    MDB_txn* transaction = nullptr;
    int result = mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction);
    if (result != MDB_SUCCESS)
        return result;
    result = mdb_dbi_open(transaction, SetupEnvironment::databaseName, 0, &database);
    if (result == MDB_SUCCESS)
        result = readAll(transaction, database, content);
    else if (result == MDB_NOTFOUND)
    {
        MDB_stat whole {};
        mdb_env_stat(environment, &whole);
        result = whole.ms_entries == 0 ? MDB_SUCCESS : MDB_CORRUPTED;
    }
    const int ended = mdb_txn_commit(transaction); // keeps the database's handle
    return result == MDB_SUCCESS ? ended : result;
}

int rewrite(MDB_env* environment, MDB_dbi database, const Content& content)
{
    MDB_txn* transaction = nullptr;
    int result = mdb_txn_begin(environment, nullptr, 0, &transaction);
    if (result != MDB_SUCCESS)
        return result;
    for (auto each = content.begin(); each != content.end() && result == MDB_SUCCESS; ++each)
    {
        MDB_val key { each->first.size(), const_cast<char*>(each->first.data()) }; // LMDB only reads them
        MDB_val value { each->second.size(), const_cast<char*>(each->second.data()) };
        result = mdb_put(transaction, database, &key, &value, 0);
    }
    const int ended = mdb_txn_commit(transaction);
    return result == MDB_SUCCESS ? ended : result;
}

int tryOut(const char* copy)
{
    MDB_env* environment = nullptr;
    int result = mdb_env_create(&environment);
    if (result != MDB_SUCCESS)
        return result;
    mdb_env_set_assert(environment, [](MDB_env*, const char*) { _exit(damaged); });
    mdb_env_set_mapsize(environment, SetupEnvironment::mapSize);
    mdb_env_set_maxdbs(environment, 1);
    constexpr mdb_mode_t ownerOnly = 0600;
    result = mdb_env_open(environment, copy, MDB_NOSUBDIR | MDB_NOLOCK | MDB_NOSYNC, ownerOnly);
    MDB_dbi database = 0;
    Content before, after;
    if (result == MDB_SUCCESS)
        result = readStore(environment, database, before);
    // Several times, so that the list of free pages is used up and a wrong one has overwritten something.
    constexpr int rounds = 4;
    for (int round = 0; round < rounds && result == MDB_SUCCESS && !before.empty(); ++round)
        result = rewrite(environment, database, before);
    if (result == MDB_SUCCESS)
        result = readStore(environment, database, after);
    return result == MDB_SUCCESS && before != after ? MDB_CORRUPTED : result;
}

/** What the child does, which has this process's handlers and locks, and may use neither. */
[[noreturn]] void judge(int data, off_t size)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int handled : { SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTERM, SIGINT })
        std::signal(handled, SIG_DFL);
    std::set_terminate([] { _exit(damaged); });
    const rlimit noCore { 0, 0 };
    setrlimit(RLIMIT_CORE, &noCore);
    constexpr rlim_t seconds = 2; // many times what a store that is full takes
    // The soft limit is a signal of its own, which counts as damage; the hard one would be told as a kill.
    const rlimit processorTime { seconds, seconds + 1 };
    setrlimit(RLIMIT_CPU, &processorTime);

    const int copy = memfd_create("settings", MFD_CLOEXEC);
    if (copy < 0)
        _exit(unknown);
    for (off_t done = 0; done < size;)
        if (sendfile(copy, data, &done, static_cast<std::size_t>(size - done)) <= 0)
            _exit(unknown);
    std::array<char, 32> path {};
    std::snprintf(path.data(), path.size(), "/proc/self/fd/%d", copy);
    _exit(tryOut(path.data()) == MDB_SUCCESS ? sound : damaged);
}

Verdict askChild(int data, off_t size)
{
    const pid_t child = fork();
    if (child == 0)
        judge(data, size);
    int status = 0;
    pid_t ended = child;
    while (child > 0 && (ended = waitpid(child, &status, 0)) < 0 && errno == EINTR)
    {
    }
    const bool killed = WIFSIGNALED(status) && (WTERMSIG(status) == SIGKILL || WTERMSIG(status) == SIGTERM);
    if (ended <= 0 || killed)
        return unknown;
    return WIFEXITED(status) ? static_cast<Verdict>(WEXITSTATUS(status)) : damaged;
}

} // namespace

bool isSetupStoreSound(const std::string& folder)
{
    const Descriptor data { ::open((folder + "/" + SetupEnvironment::dataFile).c_str(), O_RDONLY | O_CLOEXEC) };
    struct stat before = {}, after = {};
    auto verdict = sound;
    // What another process writes meanwhile may leave a torn copy, but not every time.
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt)
    {
        if (!data || fstat(data.get(), &before) != 0)
            return true;
        if (before.st_size > static_cast<off_t>(SetupEnvironment::mapSize))
            return false;
        verdict = askChild(data.get(), before.st_size);
        const bool wasWritten = fstat(data.get(), &after) == 0 && (before.st_mtim.tv_sec != after.st_mtim.tv_sec ||
                                                                   before.st_mtim.tv_nsec != after.st_mtim.tv_nsec);
        if (verdict != damaged || !wasWritten)
            break;
    }
    if (verdict == unknown)
        logger().error("%s: cannot be tried out in a child process", folder.c_str());
    return verdict != damaged;
}

} // namespace Platform
