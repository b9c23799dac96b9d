#pragma once

#include "platform/record/Recorder.h"

#include <atomic>

namespace Platform
{

/**
    A number or truth that threads share without a lock. Any thread. What one of them sees depends on how fast the others
    are, so every look is a step of a recording; for what is only counted or looked at all the time use `std::atomic`.
*/
template <typename Value>
class Shared
{
public:
    Shared(Value first = {})
        : value(first)
    {
    }

    operator Value() const { return load(); }
    Value load() const
    {
        return recorded(Step::seen, [this] { return value.load(); });
    }
    Value exchange(Value next)
    {
        return recorded(Step::seen, [=, this] { return value.exchange(next); });
    }
    void store(Value next) { value = next; }
    Value operator=(Value next)
    {
        value = next;
        return next;
    }

private:
    std::atomic<Value> value;
};

} // namespace Platform
