#include "bench/panel/DisplayPulse.h"

#include <cstdlib>
#include <string_view>
#include <xcb/xcb.h>

namespace BenchPanel
{

DisplayPulse::DisplayPulse(const juce::Component& window)
    : connection(xcb_connect(nullptr, nullptr), xcb_disconnect)
    , handle(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window.getWindowHandle())))
{
    if (xcb_connection_has_error(connection.get()) != 0 || handle == XCB_NONE)
        return;
    constexpr std::string_view name = "HEADUNIT_PULSE";
    auto* reply = xcb_intern_atom_reply(connection.get(),
                                        xcb_intern_atom(connection.get(), 0, name.size(), name.data()), nullptr);
    if (reply == nullptr)
        return;
    type = reply->atom;
    std::free(reply);
}

void DisplayPulse::beat()
{
    if (type == XCB_NONE)
        return;
    xcb_client_message_event_t event {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = handle;
    event.type = type;
    xcb_send_event(connection.get(), 0, handle, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
    if (xcb_flush(connection.get()) <= 0)
        type = XCB_NONE;
}

} // namespace BenchPanel
