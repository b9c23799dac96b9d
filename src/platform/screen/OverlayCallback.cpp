#include "platform/screen/OverlayCallback.h"

#include "platform/base/Threads.h"
#include "platform/record/Recorder.h"
#include "platform/screen/Overlay.h"

namespace Platform
{

namespace
{

WindowHandle nativeWindow(const juce::Component& window)
{
    const auto* peer = window.getPeer();
    return peer == nullptr ? noWindow
                           : static_cast<WindowHandle>(reinterpret_cast<std::uintptr_t>(peer->getNativeHandle()));
}

/** The registered windows. The display is watched while there is one. */
class Overlays
{
public:
    static Overlays& get()
    {
        static Overlays instance;
        return instance;
    }

    void set(juce::Component& window, OverlayCallback* callback)
    {
        std::erase_if(entries, [&window](const Entry& each) { return each.window == &window; });
        if (callback != nullptr)
            entries.push_back({ &window, callback });
        if (entries.empty())
            watch.reset();
        else if (watch == nullptr)
            watch = watchTouches(
                [](WindowHandle touched)
                {
                    recordStep(Step::touch, touched);
                    callOnMessageThread([touched] { get().deliver(touched); });
                });
    }

private:
    struct Entry
    {
        juce::Component* window;
        OverlayCallback* callback;
    };

    void deliver(WindowHandle touched)
    {
        // A callback may take entries away.
        const auto current = entries;
        for (const auto& each : current)
            if (isRegistered(each) && each.window->isVisible() && isBeside(touched, *each.window))
                each.callback->touchedOutside();
    }

    static bool isBeside(WindowHandle touched, const juce::Component& window)
    {
        return recorded(
            Step::touchIsBeside, [&] { return touched == noWindow || touched != nativeWindow(window); }, touched);
    }

    bool isRegistered(const Entry& entry) const
    {
        return std::any_of(entries.begin(), entries.end(),
                           [&entry](const Entry& each)
                           { return each.window == entry.window && each.callback == entry.callback; });
    }

    std::vector<Entry> entries;
    std::unique_ptr<TouchWatch> watch;
};

} // namespace

void setOverlayCallback(juce::Component& window, OverlayCallback* callback)
{
    JUCE_ASSERT_MESSAGE_THREAD
    Overlays::get().set(window, callback);
}

} // namespace Platform
