#pragma once

#include "bench/unit/Child.h"
#include "bench/unit/Journal.h"

namespace Bench
{

/**
    A message bus of the unit's own, so that a run neither sees nor disturbs the desktop's. Journal stream "bus":
    "started", "stopped".
*/
class Bus
{
public:
    explicit Bus(Journal& journalToUse);

    /**
        Starts it with its socket and configuration in the folder; ready when it returns. A later one has the same
        socket and another identity. Empty on success.
    */
    std::string start(const std::string& folder);
    void stop();
    const std::string& address() const { return busAddress; }

private:
    Journal& journal;
    Child daemon;
    std::string busAddress;
};

} // namespace Bench
