#pragma once

#include "bench/unit/Child.h"
#include "bench/unit/Journal.h"

namespace Bench
{

/**
    A private message bus, so that a run neither sees nor disturbs the desktop's. Journal stream "bus": "started",
    "stopped".
*/
class Bus
{
public:
    explicit Bus(Journal& journalToUse);

    /**
        Starts the bus with its socket and configuration in the folder; it is ready when this returns. A later bus has
        the same socket and another identity. Empty on success.
    */
    std::string start(const std::string& folder);
    void stop();
    bool isRunning() const { return daemon.isRunning(); }
    const std::string& address() const { return busAddress; }

private:
    Journal& journal;
    Child daemon;
    std::string busAddress;
};

} // namespace Bench
