#pragma once

#include "bench/console/ActiveFaults.h"
#include "bench/console/Console.h"

namespace Bench
{

/** Tells a person in one line what came of a command: what is armed now, what happened, or why nothing did. */
class Consequence
{
public:
    /** Before the command. */
    explicit Consequence(Console& consoleToUse);

    /** After it. Waits for what happens, a second at most. */
    void tell();

private:
    Console& console;
    Place from;
    std::vector<ActiveFault> before;

    bool tellFaults();
    void tellArmed(const ActiveFault& fault);
    std::vector<Event> await() const;
    void tell(const std::vector<Event>& events);
    std::string whyNothing() const;
    struct Request
    {
        std::string status, text;
    };
    std::optional<Request> lastRequest() const;
    std::string lastComplaint() const;
};

} // namespace Bench
