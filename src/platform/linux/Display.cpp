#include "platform/Configuration.h"

#include <memory>
#include <xcb/xcb.h>

namespace Platform
{

namespace
{

bool canOpenDisplay()
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection { xcb_connect(nullptr, nullptr),
                                                                                    &xcb_disconnect };
    return xcb_connection_has_error(connection.get()) == 0;
}

} // namespace

bool UIHelper::hasDisplay()
{
    if (Configuration::get().display == "none")
        return false;
    // A display server that dies takes the process with it, so the first answer holds.
    static const bool available = canOpenDisplay();
    return available;
}

} // namespace Platform
