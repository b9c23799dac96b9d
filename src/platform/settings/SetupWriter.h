#pragma once

#include "platform/base/Threads.h"
#include "platform/settings/SetupValues.h"

#include <cstdint>

namespace Platform
{

/** Where the store is, as configured. Any thread. */
std::string settingsFolder();

/**
    The settings as this process sees them: a value that is not stored yet counts before the store's, and the store's
    before the factory value. The thread "settings" opens the store, writes all that waits in one transaction, and
    closes it; it alone waits for another process that holds the store's lock. Of each setting only the newest value
    waits. Any thread.
*/
class SetupWriter
{
public:
    /** Never destroyed, as threads may read settings until the process is gone. */
    static SetupWriter& get();

    /** Opens the store unless it is open. False without a store, or when an empty one cannot get the factory values. */
    bool open();
    /** Stores what waits, within a second, and closes the store; one that does not take it stays open (logged). */
    void close();

    /** The encoded value; empty for an unknown setting. */
    std::string read(int index);
    void set(int index, const std::string& value);
    /** These are all settings from now on. */
    void replaceAll(const SetupValues& values);
    /** Waits for a short time until everything is stored that was set before; false when it is not. */
    bool waitUntilStored();

private:
    using Lock = Condition::Lock;

    /** Of the store. While it is unavailable the factory values are used. */
    enum class State { closed, opening, open, unavailable };

    /** Values with the number of the change that brought them. */
    struct Waiting
    {
        std::string value;
        std::uint64_t change;
    };

    struct Worker : Thread
    {
        explicit Worker(SetupWriter& owningWriter)
            : Thread("settings")
            , writer(owningWriter)
        {
        }
        void run() override { writer.run(); }

        SetupWriter& writer;
    };

    SetupWriter() = default;
    void openUnder(Lock& lock);
    void start();
    void run();
    int openStore(Lock& lock);
    bool store(Lock& lock);
    void noteStored(std::uint64_t change);
    void noteFailure(int result);
    void noteDelay();

    std::mutex mutex;
    Condition wake;    ///< the thread's: something waits, or it is to end
    Condition settled; ///< of others: the state, or what is stored, has changed
    Worker thread { *this };
    unsigned runs = 0; ///< how often the thread was started
    State state = State::closed;
    bool ending = false;
    bool triedOut = false; ///< whether the store is sound; the thread's, as are the next two
    bool damaged = false;  ///< it is not, and could not be set aside
    bool writable = false; ///< the store is open, and not only to be read
    SetupValues factoryValues;
    std::map<int, Waiting> waiting;
    std::uint64_t lastChange = 0;
    std::uint64_t stored = 0;      ///< the last change that is stored with all before it
    std::uint64_t replacement = 0; ///< the change that replaces all settings, while it waits; else 0
    Clock::time_point openingSince {};
    Clock::time_point storingSince {}; ///< since when the thread is at it; zero when it is not
    bool failing = false;              ///< the last attempt failed, which was said
    bool late = false;                 ///< an attempt takes longer than it may, which was said
};

} // namespace Platform
