#pragma once

#include "bench/unit/Child.h"

namespace Bench
{

/** A private display, which nobody sees and nobody else draws on. */
class VirtualDisplay
{
public:
    static bool isInstalled();

    /**
        Starts it; ready when it returns. Its server's output goes to a file in the folder. Empty on success, else what
        failed.
    */
    std::string start(const std::string& folder);
    void stop();
    /** What DISPLAY is for those that draw there; "" when it does not run. */
    const std::string& name() const { return displayName; }

private:
    Child server;
    std::string displayName;
};

} // namespace Bench
