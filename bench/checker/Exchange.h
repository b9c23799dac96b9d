#pragma once

#include "bench/checker/EngineSide.h"
#include "bench/unit/Bus.h"
#include "bench/unit/VirtualDisplay.h"
#include "platform/base/CommandLine.h"
#include "platform/channel/RemoteMessageIds.h"

#include <atomic>
#include <optional>
#include <vector>

namespace Checker
{

using Bench::Clock;
using std::chrono::milliseconds;

/** The program that is checked, and how. */
struct Subject
{
    std::string path; ///< absolute
    int appType;
    std::vector<int> pages;   ///< its own, at least one
    bool isSource;            ///< its first page has a source
    double patience = 1;      ///< every limit is this many times as long
    bool draws = false;       ///< it gets a display
    bool hasHeartbeat = true; ///< it answers them, as has been seen
    int interruption = -1;    ///< readable as soon as somebody wants no more; -1: nobody can

    bool isInterrupted() const;
};

/** A broken rule, in words. */
struct Fault
{
    std::string rule; ///< "P7"
    std::string what; ///< what happened
};

/**
    The engine's side towards one process of the program, on a bus of its own. What the program owes is noted when it is
    told something, and every message of it is held to that. Most steps are false when nothing more can come: the
    program is gone, owes an answer, or `problem` says why there is no check. One thread.
*/
class Exchange : private EngineSide::Listener
{
public:
    using CommandLine = Platform::AppCommandLine::Ptr;

    explicit Exchange(const Subject& subjectToCheck);
    ~Exchange() override;

    // What happens around the program.

    bool startBus();
    bool stopBus();
    /** Null for a start without a command line. */
    bool startProgram(const CommandLine& line);
    bool engineComes();
    bool engineGoes();
    /** Another engine takes the place of this one, and there is no moment without. */
    bool engineIsReplaced();

    /** Bus, engine and program, until that has said hello and got the answer. */
    bool begin(const CommandLine& line);

    // What the program is told. What has to follow is noted, for `isAnswered`.

    bool tell(int what, int arg1 = 0, int arg2 = 0);
    bool tellAll(int what);
    bool command(const CommandLine& line);
    /** What stands in no table. */
    bool tellRaw(const EngineSide::Fill& content, const std::string& words);
    /** From now on every answer is a matter of this rule, in the order of what is told, and has time while others come. */
    void flood(const char* rule) { floodRule = rule; }
    /** The answer to the hello. */
    bool acknowledge();

    // What is waited for.

    /** Until it owns its name. */
    bool isThere(const char* rule);
    /** It owes a hello from now on. */
    bool helloIsDue(const char* rule);
    /** It owes the request to show this page from now on. */
    bool requestIsDue(int page, const char* rule = "P4");
    /** It has, or has not, an object for what it is told: some programs do not answer at all. */
    bool hasEndpoint();
    /** Until nothing is owed. What is missing after the limits is a fault. */
    bool isAnswered();
    /** Shows the page and hears that it is there. */
    bool isShown(int page) { return tell(Platform::RMSG_PAGE_SHOW, page) && isAnswered(); }
    bool isHidden(int page) { return tell(Platform::RMSG_PAGE_HIDE, page) && isAnswered(); }
    /** Until everything that it was told has been handled; it is there still, as this rule asks. */
    bool isWell(const char* rule);
    /** Looks on for so long. Its end is a fault of this rule. */
    bool look(milliseconds howLong, const char* rule);
    /** It ends with status 0, not before and not after these times from now, after what is said in words. */
    bool ends(const char* rule, const char* cause, milliseconds earliest, milliseconds latest);
    /** False without a display. What the program draws may come a moment after it says so: waits for it, as a program answers. */
    bool becomesVisible(bool visible);

    /** What the program says unasked is this rule's matter, whatever it is; "" for the usual one. */
    void blame(const char* rule) { unaskedRule = rule; }
    void add(const std::string& rule, const std::string& what);

    int page() const { return subject.pages.front(); }
    const Subject& getSubject() const { return subject; }
    const std::vector<Fault>& getFaults() const { return faults; }
    /** Why there is no check, "" when there is one. */
    const std::string& getProblem() const { return problem; }
    /** A line for everything that passed. */
    std::vector<std::string> getTrace() const;
    /** What the program has written to standard output and error. */
    std::string output() const;

private:
    /** What the program has to say. */
    struct Debt
    {
        std::string rule;
        int what;
        int arg1;
        milliseconds limit;
        std::string cause; ///< "told RMSG_PAGE_SHOW mbFM"
        Clock::time_point since;
    };

    void onMessage(const std::string& connection, const Platform::RemoteMessage& message) override;
    void onOwner(const std::string& name, const std::string& connection) override;
    void onAsked(const std::string& error) override;

    bool isBroken(const std::string& rule) const;
    /** Its process has ended, and everything that it has said is known. */
    bool hasEnded() const { return status >= 0 && owner.empty(); }
    /** Whether it has left the bus, which is a fault of this rule. */
    bool isGone(const std::string& rule);
    bool connect();
    /** False when the text is one, which is the problem. */
    bool succeeds(const std::string& text);
    void owe(const std::string& rule, int what, int arg1, int limitMs, const std::string& cause);
    void oweFor(int what, int arg1);
    void settle(std::vector<Debt>::iterator debt);
    void onUnasked(const Platform::RemoteMessage& message);
    Clock::time_point lastLimit() const;
    /** Handles what comes until then, or until the program has ended. */
    template <typename Done>
    bool wait(Clock::time_point until, const Done& done);
    milliseconds patient(milliseconds limit) const;
    void note(const std::string& line);

    const Subject& subject;
    const std::string ownName;
    std::string folder, problem;
    Clock::time_point began = Clock::now(), lastSettled;
    std::vector<Fault> faults;
    std::vector<std::string> trace;
    std::size_t untraced = 0;

    Bench::Journal journal;
    Bench::Bus bus { journal };
    Bench::VirtualDisplay display;
    int wake;
    std::atomic<int> status { -1 }; ///< of the process that has ended, as waitpid gives it
    std::unique_ptr<EngineSide> side;

    std::string owner; ///< the connection that owns the program's name
    std::vector<std::string> ownConnections;
    bool saidHello = false, isAskedAnswered = false;
    std::string noEndpoint; ///< what the bus said of a call
    std::vector<Debt> debts;
    std::vector<int> askedFor; ///< pages
    int shownPage;
    int lastTold = 0;
    std::string unaskedRule, floodRule;

    Bench::Child program; ///< goes first
};

} // namespace Checker
