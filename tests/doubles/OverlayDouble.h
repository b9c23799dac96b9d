#pragma once

#include "platform/screen/Overlay.h"

namespace Platform::doubles
{

/** The touches of a test. */
struct OverlayDouble
{
    /** A finger comes down on the window; every watch hears of it on the calling thread. The number of watches. */
    static int touch(WindowHandle window);
};

} // namespace Platform::doubles
