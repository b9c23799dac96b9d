#pragma once

#include "platform/screen/Window.h"

#include <vector>

namespace Platform::doubles
{

/** The windows of a test and what was done to them. Any thread. */
struct WindowDouble
{
    struct Posted
    {
        WindowHandle window; ///< allWindows for a message to every window
        std::int32_t message;
        std::int32_t wParam;
        std::int32_t lParam;
        bool operator==(const Posted&) const = default;
    };

    enum class Operation { show, hide, foreground };

    struct Action
    {
        WindowHandle window;
        Operation operation;
        bool operator==(const Action&) const = default;
    };

    /** Forgets the windows and the records. */
    static void reset();

    static WindowHandle add(const juce::String& title, int pid = -1);
    static void remove(WindowHandle window);

    /** Messages that were posted since the last call, in order. */
    static std::vector<Posted> takePosted();
    /** What was shown, hidden and brought to the front since the last call, in order. */
    static std::vector<Action> takeActions();
};

} // namespace Platform::doubles
