#pragma once

#include "platform/settings/SetupValues.h"

#include <atomic>
#include <cerrno>
#include <lmdb.h>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <string>

namespace Platform
{

/**
    The LMDB environment behind the settings store: one per process, of one database of encoded values. Any thread may
    read; writing is one thread's, as a write waits without an end for a process that holds the store's lock, and so are
    opening and closing, but in a process that only reads. Each reading thread keeps a parked read transaction, which is
    renewed for a read and reset after it; closing the environment ends those of all threads. Results are LMDB's codes,
    0 for success.
*/
class SetupEnvironment
{
public:
    static constexpr int notOpen = ENODEV; ///< what reads and writes answer then
    static constexpr const char* databaseName = "settings";
    static constexpr const char* dataFile = "data.mdb";
    /** Many times what all known settings can hold, so that the map never has to grow under its readers. */
    static constexpr std::size_t mapSize = 64 * 1024 * 1024;

    enum class Access {
        readOnly, ///< makes nothing, and needs no right to write
        readWrite ///< makes the folder and the files
    };

    /** Never destroyed, as threads may read settings until the process is gone. */
    static SetupEnvironment& get();

    /** Opens the environment in a folder; an open one stays as it is. */
    int open(const std::string& folder, Access access);
    void close();
    bool isEmpty();

    /** MDB_NOTFOUND leaves `value` empty. */
    int read(int index, std::string& value);
    /** In one transaction: all of it or nothing. With `replacesAll` everything else goes out. */
    int write(const SetupValues& values, bool replacesAll);

private:
    struct Reader
    {
        ~Reader();
        MDB_txn* transaction = nullptr;
        unsigned generation = 0;
    };

    SetupEnvironment() = default;
    int openFiles(const std::string& folder, Access access);
    int begin(Reader& reader);
    void forget(Reader& reader);
    void closeFiles();

    static thread_local Reader threadReader;

    /** Shared by reads and writes; held alone while the environment is opened or closed. */
    std::shared_mutex mutex;
    MDB_env* environment = nullptr;
    std::atomic<MDB_dbi> database { noDatabase };
    static constexpr MDB_dbi noDatabase = 0; ///< LMDB's own list of free pages, never ours
    unsigned generation = 0; ///< tells a thread that its parked transaction went with an earlier environment
    std::mutex parkedMutex;
    std::set<MDB_txn*> parked;
    unsigned writes = 0;
};

} // namespace Platform
