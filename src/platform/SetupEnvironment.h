#pragma once

#include <atomic>
#include <cerrno>
#include <functional>
#include <lmdb.h>
#include <map>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <string>

namespace Platform
{

/** Encoded settings by index, as they are put into the store. */
using SetupValues = std::map<int, std::string>;

/**
    The LMDB environment behind the settings store: one per process, of one database of encoded values. Any thread.
    Each reading thread keeps a parked read transaction, which is renewed for a read and reset after it; closing the
    environment ends those of all threads. Results are LMDB's codes, 0 for success.
*/
class SetupEnvironment
{
public:
    static constexpr int notOpen = ENODEV; ///< what reads and writes answer then

    /** Never destroyed, as threads may read settings until the process is gone. */
    static SetupEnvironment& get();

    bool isOpen();
    /** Opens the environment in a folder, which it makes; an open one stays as it is. A damaged one is not opened. */
    int open(const std::string& folder);
    void close();
    bool isEmpty();

    /** MDB_NOTFOUND leaves `value` empty. */
    int read(int index, std::string& value);
    int write(int index, const std::string& value);
    /** In one transaction: all of it or nothing. */
    int replaceAll(const SetupValues& values);

private:
    struct Reader
    {
        ~Reader();
        MDB_txn* transaction = nullptr;
        unsigned generation = 0;
    };

    SetupEnvironment() = default;
    int openFiles(const std::string& folder);
    int begin(Reader& reader);
    int write(const std::function<int(MDB_txn*)>& change);
    int writeOnce(const std::function<int(MDB_txn*)>& change);
    int put(MDB_txn* transaction, int index, const std::string& value) const;
    bool makeRoom(int reason);
    bool isTruncated(const std::string& folder);
    void forget(Reader& reader);
    void closeFiles();

    static thread_local Reader threadReader;

    /** Shared by reads and writes; held alone while the environment is opened, closed or mapped anew. */
    std::shared_mutex mutex;
    MDB_env* environment = nullptr;
    MDB_dbi database = 0;
    unsigned generation = 0; ///< tells a thread that its parked transaction went with an earlier environment
    std::mutex parkedMutex;
    std::set<MDB_txn*> parked;
    std::atomic<unsigned> writes { 0 };
};

} // namespace Platform
