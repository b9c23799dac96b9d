#include "bench/panel/DisplayLoss.h"

#include <X11/Xlib.h>

namespace BenchPanel
{

namespace
{

void (*called)() = nullptr;

} // namespace

void onDisplayLoss(void (*function)())
{
    called = function;
    ::XSetIOErrorHandler(
        [](::Display*)
        {
            called();
            return 0;
        });
}

} // namespace BenchPanel
