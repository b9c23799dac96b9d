#pragma once

#include <deque>
#include <juce_core/juce_core.h>
#include <optional>

namespace EngineLayer
{

struct KeyEvent
{
    int origin;
    int value;
};

/**
    Keys that wait for their turn. Keys may come faster than they are acted on; then the oldest are dropped and counted,
    so that the unit does what the user wants now, not what he wanted a minute ago. One thread.
*/
class KeyQueue
{
public:
    static constexpr std::size_t capacity = 16;

    /** False when the oldest was dropped for it. */
    bool push(KeyEvent key)
    {
        keys.push_back(key);
        if (keys.size() <= capacity)
            return true;
        keys.pop_front();
        ++dropped;
        return false;
    }

    std::optional<KeyEvent> pop()
    {
        if (keys.empty())
            return {};
        const auto first = keys.front();
        keys.pop_front();
        return first;
    }

    bool isEmpty() const { return keys.empty(); }
    std::uint64_t getDropped() const { return dropped; }

private:
    std::deque<KeyEvent> keys;
    std::uint64_t dropped = 0;
};

} // namespace EngineLayer
