#pragma once

#include "platform/base/Logger.h"

#include <juce_core/juce_core.h>
#include <mutex>
#include <set>

namespace Platform
{

/** Lets the first failure of each thing into the log, and the next one only after it has worked again. Any thread. */
class FailureLog
{
public:
    explicit FailureLog(const Log& log)
        : logger(log)
    {
    }

    /** Whether the result is a success. The name is what the line begins with. */
    bool check(int thing, const juce::String& name, const juce::Result& result)
    {
        const std::lock_guard guard(lock);
        if (result.wasOk())
            failing.erase(thing);
        else if (failing.insert(thing).second)
            logger().error(name + ": " + result.getErrorMessage());
        return result.wasOk();
    }

private:
    const Log logger;
    std::mutex lock;
    std::set<int> failing;
};

} // namespace Platform
