#pragma once

#include "bench/Child.h"

namespace Bench
{

/** A message bus of the unit's own, so that a run neither sees nor disturbs the desktop's. */
class Bus
{
public:
    /** Starts it with its socket and configuration in the folder; ready when it returns. Empty on success. */
    std::string start(const std::string& folder);
    void stop();
    const std::string& address() const { return busAddress; }

private:
    Child daemon;
    std::string busAddress;
};

} // namespace Bench
