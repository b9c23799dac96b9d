#pragma once

#include <chrono>
#include <thread>

/** Waits until the condition holds, and gives up after a time that a loaded machine does not need. */
template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(60))
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
