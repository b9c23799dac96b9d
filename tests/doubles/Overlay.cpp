#include "platform/screen/Overlay.h"

#include "doubles/OverlayDouble.h"

#include <mutex>
#include <vector>

namespace Platform
{

namespace
{

class WatchDouble;

std::mutex lock;
std::vector<WatchDouble*> watches;

class WatchDouble : public TouchWatch
{
public:
    explicit WatchDouble(TouchHandler touchHandler)
        : handler(std::move(touchHandler))
    {
        const std::lock_guard guard(lock);
        watches.push_back(this);
    }
    ~WatchDouble() override
    {
        const std::lock_guard guard(lock);
        std::erase(watches, this);
    }

    const TouchHandler handler;
};

} // namespace

int doubles::OverlayDouble::touch(WindowHandle window)
{
    // Held during the delivery, so that none outlives its watch.
    const std::lock_guard guard(lock);
    for (const auto* watch : watches)
        watch->handler(window);
    return static_cast<int>(watches.size());
}

/** There is something to touch whatever `hasDisplay` answers: bars are tested without a display. */
std::unique_ptr<TouchWatch> watchTouches(TouchHandler handler)
{
    return std::make_unique<WatchDouble>(std::move(handler));
}

std::unique_ptr<OverlayWindow> makeOverlayWindow(OverlayWindow::PointerHandler)
{
    return nullptr;
}

int getDisplayWidth()
{
    return 0;
}

} // namespace Platform
