#include "platform/settings/SetupEnvironment.h"

#include "platform/base/Descriptor.h"

#include <array>
#include <fcntl.h>
#include <filesystem>

namespace Platform
{

namespace
{

constexpr mdb_mode_t fileMode = 0644;
/** Readers that died without leaving keep old pages from being used again; every so many writes they are cleared. */
constexpr unsigned writesPerReaderCheck = 64;

/** Index as 4 bytes, high byte first, so that the database is in the order of the indexes. */
struct Key
{
    explicit Key(int index)
    {
        for (std::size_t position = 0; position < bytes.size(); ++position)
            bytes[position] = static_cast<unsigned char>(static_cast<unsigned>(index) >> (24 - 8 * position));
    }

    MDB_val value() { return { bytes.size(), bytes.data() }; }

    std::array<unsigned char, 4> bytes {};
};

void checkReaders(MDB_env* environment)
{
    int dead = 0;
    mdb_reader_check(environment, &dead);
}

/** The lock file is mapped; where the disk has no room for it, its first use would end the process. */
int allocateLockFile(const std::string& folder, SetupEnvironment::Access access)
{
    constexpr off_t atLeastWhatIsMapped = 16 * 1024;
    const int create = access == SetupEnvironment::Access::readWrite ? O_CREAT : 0;
    const Descriptor file { ::open((folder + "/lock.mdb").c_str(), O_RDWR | O_CLOEXEC | create, fileMode) };
    return file ? posix_fallocate(file.get(), 0, atLeastWhatIsMapped) : errno;
}

int change(MDB_txn* transaction, MDB_dbi target, const SetupValues& values, bool replacesAll)
{
    constexpr int emptyOnly = 0;
    int result = replacesAll ? mdb_drop(transaction, target, emptyOnly) : MDB_SUCCESS;
    for (auto each = values.begin(); each != values.end() && result == MDB_SUCCESS; ++each)
    {
        Key key(each->first);
        auto keyValue = key.value();
        MDB_val data { each->second.size(), const_cast<char*>(each->second.data()) }; // LMDB only reads it
        result = mdb_put(transaction, target, &keyValue, &data, 0);
    }
    return result;
}

} // namespace

thread_local SetupEnvironment::Reader SetupEnvironment::threadReader;

SetupEnvironment::Reader::~Reader()
{
    SetupEnvironment::get().forget(*this);
}

SetupEnvironment& SetupEnvironment::get()
{
    static auto& instance = *new SetupEnvironment;
    return instance;
}

int SetupEnvironment::open(const std::string& folder, Access access)
{
    const std::unique_lock lock(mutex);
    if (environment != nullptr)
        return MDB_SUCCESS;
    const int result = openFiles(folder, access);
    if (result == MDB_SUCCESS)
        ++generation;
    else
        closeFiles();
    return result;
}

int SetupEnvironment::openFiles(const std::string& folder, Access access)
{
    unsigned flags = MDB_NOTLS;
    if (access == Access::readWrite)
    {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error)
            return error.value();
        if (const int failure = allocateLockFile(folder, access); failure != 0)
            return failure;
    }
    else
        flags |= MDB_RDONLY | (allocateLockFile(folder, access) == 0 ? 0 : MDB_NOLOCK);

    int result = mdb_env_create(&environment);
    if (result == MDB_SUCCESS)
        result = mdb_env_set_mapsize(environment, mapSize);
    if (result == MDB_SUCCESS)
        result = mdb_env_set_maxdbs(environment, 1);
    if (result == MDB_SUCCESS)
        result = mdb_env_open(environment, folder.c_str(), flags, fileMode);
    if (result != MDB_SUCCESS)
        return result;

    checkReaders(environment);
    MDB_txn* transaction = nullptr;
    result = mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction);
    if (result != MDB_SUCCESS)
        return result;
    // A store that was only just made has no database yet; the first write makes it.
    MDB_dbi opened = noDatabase;
    result = mdb_dbi_open(transaction, databaseName, 0, &opened);
    if (result != MDB_SUCCESS)
    {
        mdb_txn_abort(transaction);
        return result == MDB_NOTFOUND ? MDB_SUCCESS : result;
    }
    database = opened;
    return mdb_txn_commit(transaction);
}

void SetupEnvironment::close()
{
    const std::unique_lock lock(mutex);
    closeFiles();
}

void SetupEnvironment::closeFiles()
{
    if (environment == nullptr)
        return;
    for (auto* transaction : parked)
        mdb_txn_abort(transaction);
    parked.clear();
    mdb_env_close(environment);
    environment = nullptr;
    database = noDatabase;
    ++generation;
}

/** Shared, so that a thread can end while another waits for the store's lock. */
void SetupEnvironment::forget(Reader& reader)
{
    const std::shared_lock lock(mutex);
    if (reader.transaction == nullptr || reader.generation != generation)
        return;
    const std::scoped_lock parkedLock(parkedMutex);
    parked.erase(reader.transaction);
    mdb_txn_abort(reader.transaction);
}

bool SetupEnvironment::isEmpty()
{
    const std::shared_lock lock(mutex);
    if (environment == nullptr || database == noDatabase || begin(threadReader) != MDB_SUCCESS)
        return true;
    MDB_stat statistics {};
    mdb_stat(threadReader.transaction, database, &statistics);
    mdb_txn_reset(threadReader.transaction);
    return statistics.ms_entries == 0;
}

/** Makes the thread's transaction a current one. With the lock held. */
int SetupEnvironment::begin(Reader& reader)
{
    if (reader.transaction != nullptr && reader.generation == generation)
        return mdb_txn_renew(reader.transaction);
    reader.transaction = nullptr;
    const int result = mdb_txn_begin(environment, nullptr, MDB_RDONLY, &reader.transaction);
    if (result != MDB_SUCCESS)
        return result;
    reader.generation = generation;
    const std::scoped_lock lock(parkedMutex);
    parked.insert(reader.transaction);
    return MDB_SUCCESS;
}

int SetupEnvironment::read(int index, std::string& value)
{
    value.clear();
    const std::shared_lock lock(mutex);
    if (environment == nullptr)
        return notOpen;
    if (database == noDatabase)
        return MDB_NOTFOUND;
    int result = begin(threadReader);
    if (result != MDB_SUCCESS)
        return result;
    Key key(index);
    auto keyValue = key.value();
    MDB_val found {};
    result = mdb_get(threadReader.transaction, database, &keyValue, &found);
    if (result == MDB_SUCCESS)
        value.assign(static_cast<const char*>(found.mv_data), found.mv_size);
    mdb_txn_reset(threadReader.transaction);
    return result;
}

int SetupEnvironment::write(const SetupValues& values, bool replacesAll)
{
    const std::shared_lock lock(mutex);
    if (environment == nullptr)
        return notOpen;
    if (++writes % writesPerReaderCheck == 0)
        checkReaders(environment);

    MDB_txn* transaction = nullptr;
    int result = mdb_txn_begin(environment, nullptr, 0, &transaction);
    if (result != MDB_SUCCESS)
        return result;
    MDB_dbi opened = database;
    if (opened == noDatabase)
        result = mdb_dbi_open(transaction, databaseName, MDB_CREATE, &opened);
    if (result == MDB_SUCCESS)
        result = change(transaction, opened, values, replacesAll);
    if (result != MDB_SUCCESS)
    {
        mdb_txn_abort(transaction);
        return result;
    }
    result = mdb_txn_commit(transaction);
    if (result == MDB_SUCCESS)
        database = opened;
    return result;
}

} // namespace Platform
