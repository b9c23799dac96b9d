#include "platform/SetupEnvironment.h"

#include <array>
#include <filesystem>
#include <mutex>

namespace Platform
{

namespace
{

constexpr std::size_t firstMapSize = 1024 * 1024;
constexpr std::size_t lastMapSize = 64 * firstMapSize;
constexpr const char* databaseName = "settings";
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

bool SetupEnvironment::isOpen()
{
    const std::shared_lock lock(mutex);
    return environment != nullptr;
}

int SetupEnvironment::open(const std::string& folder)
{
    const std::unique_lock lock(mutex);
    if (environment != nullptr)
        return MDB_SUCCESS;
    const int result = openFiles(folder);
    if (result == MDB_SUCCESS)
        ++generation;
    else
        closeFiles();
    return result;
}

int SetupEnvironment::openFiles(const std::string& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        return error.value();

    int result = mdb_env_create(&environment);
    if (result == MDB_SUCCESS)
        result = mdb_env_set_mapsize(environment, firstMapSize);
    if (result == MDB_SUCCESS)
        result = mdb_env_set_maxdbs(environment, 1);
    if (result == MDB_SUCCESS)
        result = mdb_env_open(environment, folder.c_str(), MDB_NOTLS, fileMode);
    if (result != MDB_SUCCESS)
        return result;
    if (isTruncated(folder))
        return MDB_CORRUPTED;

    checkReaders(environment);
    MDB_txn* transaction = nullptr;
    result = mdb_txn_begin(environment, nullptr, 0, &transaction);
    if (result != MDB_SUCCESS)
        return result;
    result = mdb_dbi_open(transaction, databaseName, MDB_CREATE, &database);
    if (result == MDB_SUCCESS)
        return mdb_txn_commit(transaction);
    mdb_txn_abort(transaction);
    return result;
}

/** Pages that the file should have but does not would end the process on their first use. */
bool SetupEnvironment::isTruncated(const std::string& folder)
{
    MDB_envinfo info {};
    MDB_stat statistics {};
    mdb_env_info(environment, &info);
    mdb_env_stat(environment, &statistics);
    std::error_code error;
    const auto size = std::filesystem::file_size(std::filesystem::path(folder) / "data.mdb", error);
    return error || size < (info.me_last_pgno + 1) * statistics.ms_psize;
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
    ++generation;
}

void SetupEnvironment::forget(Reader& reader)
{
    const std::unique_lock lock(mutex);
    if (reader.transaction != nullptr && reader.generation == generation)
    {
        parked.erase(reader.transaction);
        mdb_txn_abort(reader.transaction);
    }
}

bool SetupEnvironment::isEmpty()
{
    const std::shared_lock lock(mutex);
    if (environment == nullptr || begin(threadReader) != MDB_SUCCESS)
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
    for (;;)
    {
        int result = MDB_SUCCESS;
        {
            const std::shared_lock lock(mutex);
            if (environment == nullptr)
                return notOpen;
            result = begin(threadReader);
            if (result == MDB_SUCCESS)
            {
                Key key(index);
                auto keyValue = key.value();
                MDB_val found {};
                result = mdb_get(threadReader.transaction, database, &keyValue, &found);
                if (result == MDB_SUCCESS)
                    value.assign(static_cast<const char*>(found.mv_data), found.mv_size);
                mdb_txn_reset(threadReader.transaction);
            }
        }
        if (result == MDB_SUCCESS || !makeRoom(result))
            return result;
    }
}

int SetupEnvironment::write(int index, const std::string& value)
{
    return write([&](MDB_txn* transaction) { return put(transaction, index, value); });
}

int SetupEnvironment::replaceAll(const SetupValues& values)
{
    return write(
        [&](MDB_txn* transaction)
        {
            constexpr int emptyOnly = 0;
            int result = mdb_drop(transaction, database, emptyOnly);
            for (const auto& [index, value] : values)
                if (result == MDB_SUCCESS)
                    result = put(transaction, index, value);
            return result;
        });
}

int SetupEnvironment::write(const std::function<int(MDB_txn*)>& change)
{
    for (;;)
    {
        const int result = writeOnce(change);
        if (result == MDB_SUCCESS || !makeRoom(result))
            return result;
    }
}

int SetupEnvironment::writeOnce(const std::function<int(MDB_txn*)>& change)
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
    result = change(transaction);
    if (result == MDB_SUCCESS)
        return mdb_txn_commit(transaction);
    mdb_txn_abort(transaction);
    return result;
}

int SetupEnvironment::put(MDB_txn* transaction, int index, const std::string& value) const
{
    Key key(index);
    auto keyValue = key.value();
    MDB_val data { value.size(), const_cast<char*>(value.data()) }; // LMDB only reads it
    return mdb_put(transaction, database, &keyValue, &data, 0);
}

/** Maps more of the file when that was the reason of a failure; false when it was not, or there is no more. */
bool SetupEnvironment::makeRoom(int reason)
{
    if (reason != MDB_MAP_FULL && reason != MDB_MAP_RESIZED)
        return false;
    const std::unique_lock lock(mutex);
    if (environment == nullptr)
        return false;
    constexpr std::size_t asTheFileHas = 0;
    if (reason == MDB_MAP_RESIZED)
        return mdb_env_set_mapsize(environment, asTheFileHas) == MDB_SUCCESS;
    MDB_envinfo info {};
    mdb_env_info(environment, &info);
    return info.me_mapsize < lastMapSize && mdb_env_set_mapsize(environment, info.me_mapsize * 2) == MDB_SUCCESS;
}

} // namespace Platform
