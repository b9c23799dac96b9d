#pragma once

#include <functional>
#include <juce_graphics/juce_graphics.h>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace BenchPanel
{

/**
    What is on a display of the unit, followed on a thread of its own: it is read again whenever something there has been
    drawn. Without a display, and when it has gone, there is no picture.
*/
class UnitScreen
{
public:
    /** "" for no display. `changed` is called on the following thread when there is a new picture. */
    UnitScreen(const std::string& display, std::function<void()> changedCall);
    ~UnitScreen();
    UnitScreen(const UnitScreen&) = delete;
    UnitScreen& operator=(const UnitScreen&) = delete;

    /** The newest, never drawn to again; an invalid one when there is none. Any thread. */
    juce::Image picture() const;

private:
    struct Connection;

    const std::function<void()> changed;
    mutable std::mutex lock;
    juce::Image newest;
    std::unique_ptr<Connection> connection;
    std::jthread thread; // last: it uses all the others

    void follow(const std::stop_token& stop);
    void keep(juce::Image image);
};

} // namespace BenchPanel
