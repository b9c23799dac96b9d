#include "platform/settings/SetupWriter.h"

#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"
#include "platform/settings/SetupCheck.h"
#include "platform/settings/SetupEnvironment.h"

#include <filesystem>
#include <utility>

namespace Platform
{

using namespace std::chrono_literals;

namespace
{

constexpr auto retryDelay = 1000ms;
constexpr auto openLimit = 10000ms;
constexpr auto closeLimit = 1000ms;
/** What who announces a change waits for it: far more than a disk needs, and less than a group has for its end. */
constexpr auto storeLimit = 150ms;
constexpr auto delayToMention = 1000ms;

constexpr Log logger { "platform/SetupWriter", "SetupStore" };

/** A store that would end the process makes room for a new one. 0, or the number of the system's error. */
int setAside(const std::string& folder)
{
    const auto aside = folder + ".damaged";
    std::error_code error;
    std::filesystem::remove_all(aside, error);
    std::filesystem::rename(folder, aside, error);
    if (!error)
        logger().error("%s: damaged; the store is set aside as %s", folder.c_str(), aside.c_str());
    return error.value();
}

} // namespace

std::string settingsFolder()
{
    return (AppConfig::getSystemFilePath() + "settings").toStdString();
}

SetupWriter& SetupWriter::get()
{
    static auto& instance = *new SetupWriter;
    return instance;
}

bool SetupWriter::open()
{
    Lock lock(mutex);
    openUnder(lock);
    return state == State::open && (!factoryValues.empty() || !SetupEnvironment::get().isEmpty());
}

/** Starts the thread unless it runs, and waits until it has tried to open the store, for a limited time. */
void SetupWriter::openUnder(Lock& lock)
{
    do
    {
        if (state == State::closed)
            start();
        settled.waitUntil(lock, openingSince + openLimit, [this] { return state != State::opening; });
    } while (state == State::closed);
}

void SetupWriter::start()
{
    thread.waitForThreadToExit(-1);
    state = State::opening;
    openingSince = Clock::now();
    ending = triedOut = damaged = writable = false;
    ++runs;
    thread.startThread();
}

void SetupWriter::close()
{
    Lock lock(mutex);
    if (state == State::closed)
        return;
    ending = true;
    wake.notify();
    const auto ended = [this, run = runs] { return state == State::closed || runs != run; };
    if (!settled.waitUntil(lock, Clock::now() + closeLimit, ended))
    {
        ending = false;
        logger().error("the store stays open at the end, as it does not take %zu settings", waiting.size());
    }
    else if (state == State::closed)
        thread.waitForThreadToExit(-1);
}

std::string SetupWriter::read(int index)
{
    auto& environment = SetupEnvironment::get();
    std::string value;
    int result = SetupEnvironment::notOpen;
    // It may be closed by another thread in between.
    while (result == SetupEnvironment::notOpen)
    {
        Lock lock(mutex);
        openUnder(lock);
        const auto found = waiting.find(index);
        if (found != waiting.end())
            return found->second.value;
        if (replacement != 0)
            return {};
        const auto factoryValue = factoryValues.find(index);
        const auto otherwise = factoryValue != factoryValues.end() ? factoryValue->second : std::string();
        if (state != State::open)
            return otherwise;
        lock.unlock();
        result = environment.read(index, value);
        if (result == MDB_NOTFOUND)
            return otherwise;
    }
    if (result != MDB_SUCCESS)
        logger().error("setting %d cannot be read: %s", index, mdb_strerror(result));
    return value;
}

void SetupWriter::set(int index, const std::string& value)
{
    Lock lock(mutex);
    openUnder(lock);
    noteDelay();
    waiting[index] = { value, ++lastChange };
    wake.notify();
}

void SetupWriter::replaceAll(const SetupValues& values)
{
    Lock lock(mutex);
    openUnder(lock);
    factoryValues = values;
    replacement = ++lastChange;
    waiting.clear();
    for (const auto& [index, value] : values)
        waiting[index] = { value, lastChange };
    wake.notify();
}

bool SetupWriter::waitUntilStored()
{
    Lock lock(mutex);
    noteDelay();
    // A store that does not take values holds up whoever asks once, not every time.
    const auto end = (storingSince == Clock::time_point {} ? Clock::now() : storingSince) + storeLimit;
    const auto isStored = [this, change = lastChange] { return stored >= change; };
    settled.waitUntil(lock, end, [&] { return isStored() || failing; });
    return isStored();
}

void SetupWriter::run()
{
    auto values = readFactoryValues();
    Lock lock(mutex);
    factoryValues = std::move(values);
    openStore(lock);
    for (;;)
    {
        wake.wait(lock, [this] { return ending || !waiting.empty(); });
        if (waiting.empty())
            break;
        if (store(lock))
            continue;
        if (ending)
            break;
        wake.waitUntil(lock, Clock::now() + retryDelay, [this] { return ending; });
    }
    if (!waiting.empty())
        logger().error("%zu settings are not stored at the end", waiting.size());
    waiting.clear();
    replacement = 0;
    stored = lastChange;
    failing = late = false;
    SetupEnvironment::get().close();
    state = State::closed;
    settled.notify();
}

/** Where it cannot be written it may still be read. */
int SetupWriter::openStore(Lock& lock)
{
    state = State::opening;
    openingSince = Clock::now();
    lock.unlock();
    auto& environment = SetupEnvironment::get();
    const auto folder = settingsFolder();
    environment.close();
    if (!std::exchange(triedOut, true))
        damaged = !isSetupStoreSound(folder);
    int result = damaged ? setAside(folder) : MDB_SUCCESS;
    damaged = result != MDB_SUCCESS;
    if (!damaged)
        result = environment.open(folder, SetupEnvironment::Access::readWrite);
    writable = result == MDB_SUCCESS;
    const bool readable =
        writable || (!damaged && environment.open(folder, SetupEnvironment::Access::readOnly) == MDB_SUCCESS);
    const bool empty = writable && environment.isEmpty();
    lock.lock();
    if (empty)
        for (const auto& [index, value] : factoryValues)
            waiting.try_emplace(index, Waiting { value, ++lastChange });
    state = readable ? State::open : State::unavailable;
    if (!writable)
        noteFailure(result);
    settled.notify();
    return result;
}

/** One attempt at all that waits. */
bool SetupWriter::store(Lock& lock)
{
    storingSince = Clock::now();
    int result = writable ? MDB_SUCCESS : openStore(lock);
    if (result == MDB_SUCCESS)
    {
        SetupValues values;
        for (const auto& [index, each] : waiting)
            values[index] = each.value;
        const auto change = lastChange;
        const bool replacesAll = replacement != 0;
        lock.unlock();
        result = SetupEnvironment::get().write(values, replacesAll);
        lock.lock();
        writable = result != MDB_PANIC; // then it is of no more use; after anything else it can be tried as it is
        if (result == MDB_SUCCESS)
            noteStored(change);
    }
    if (result != MDB_SUCCESS)
        noteFailure(result);
    storingSince = {};
    settled.notify();
    return result == MDB_SUCCESS;
}

void SetupWriter::noteStored(std::uint64_t change)
{
    if (failing || late)
        logger().info("settings are stored again; %llu changes waited",
                      static_cast<unsigned long long>(change - stored));
    failing = late = false;
    stored = change;
    std::erase_if(waiting, [&](const auto& each) { return each.second.change <= change; });
    if (replacement <= change)
        replacement = 0;
}

/** The first failure is said, and the next one only after something could be stored. */
void SetupWriter::noteFailure(int result)
{
    if (!std::exchange(failing, true))
        logger().error("%s: settings cannot be stored: %s; they are kept until they can", settingsFolder().c_str(),
                       mdb_strerror(result));
}

void SetupWriter::noteDelay()
{
    const bool delayed = storingSince != Clock::time_point {} && Clock::now() - storingSince > delayToMention;
    if (delayed && !std::exchange(late, true))
        // As an argument: a format without any is no literal any more inside the template.
        logger().error("settings wait to be stored: another process holds the store, or the disk is slow");
}

} // namespace Platform
