#pragma once

#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessage.h"

#include <array>
#include <deque>
#include <string>
#include <variant>

namespace Platform
{

struct IpcPresence
{
    int appType;
    bool present;
};

/** What the delivery thread has to tell the receiver of the bus: a message, a presence or a broadcast text. */
using IpcEvent = std::variant<RemoteMessage::Ptr, IpcPresence, juce::String>;

/**
    Who sits on which endpoint name, and whether it may speak under it. An owner counts only once its process is known
    and is the expected one; until then its messages are held, so that a program's first words are not lost. Touches no
    bus; not locked, its user does that.
*/
class IpcSeats
{
public:
    /** The endpoint names: every application type but AppUnknown. */
    static constexpr int count = Pubhead::AppUnknown;

    enum class Standing { absent, checking, present, refused };

    explicit IpcSeats(std::deque<IpcEvent>& target)
        : events(target)
    {
    }

    /** A name got another owner; "" for none. The owner's process is to be asked for. */
    void setOwner(int appType, const std::string& connection);
    /**
        The answer: process of that owner, -1 when the bus does not know it. Ignored when the name has another owner by
        now.
    */
    void setProcess(int appType, const std::string& connection, int pid);
    void expectProcess(int appType, int pid);
    /** The bus is gone. Expectations stay. */
    void clearOwners();
    /** For a new session: expectations and counts begin anew. */
    void reset();

    bool isPresent(int appType) const;
    bool isChecking() const;
    /** "" when nobody is present. */
    std::string connectionOf(int appType) const;
    int processOf(int appType) const;
    /** The name's application type that the connection owns, present or not; -1 when it owns none. */
    int typeOf(const char* connection) const;

    /** Files a message under the program that owns its sender's name, or drops it (counted and logged). */
    void received(const char* connection, RemoteMessage::Ptr message);
    /**
        Whether the connection is that of a program that is present; what comes from another is dropped (counted and
        logged).
    */
    bool mayAct(const char* connection);
    int getDropped() const { return dropped; }

private:
    struct Seat
    {
        std::string connection;
        bool processKnown = false;
        int process = -1;
        int expected = -1;
        Standing standing = Standing::absent;
        std::vector<RemoteMessage::Ptr> held;
    };

    static constexpr std::size_t maxHeld = 1024;

    static bool isSeat(int appType) { return appType >= 0 && appType < count; }
    void evaluate(int appType);
    void drop(const char* connection, const char* reason);

    std::array<Seat, count> seats;
    std::deque<IpcEvent>& events;
    int dropped = 0;
};

} // namespace Platform
