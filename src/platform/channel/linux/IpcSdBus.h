#pragma once

#include <memory>
#include <regex>
#include <string>
#include <systemd/sd-bus.h>

namespace Platform
{

/** In front of a program's name, the name that it owns on the bus. */
inline constexpr const char* busNamePrefix = "com.corvane.";
/** What every endpoint offers there. */
inline constexpr const char* endpointPath = "/com/corvane/Endpoint";
inline constexpr const char* endpointInterface = "com.corvane.Endpoint";

/** Owners of what the bus library hands out. A slot that goes cancels its match, object or pending call. */
struct SdBusDeleter
{
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};

using SdBus = std::unique_ptr<sd_bus, SdBusDeleter>;
using SdBusSlot = std::unique_ptr<sd_bus_slot, SdBusDeleter>;
using SdBusMessage = std::unique_ptr<sd_bus_message, SdBusDeleter>;

/** A bus that is started anew at the same place has another identity (`guid`), and is as good. */
inline std::string withoutIdentity(const std::string& address)
{
    return std::regex_replace(address, std::regex(",guid=[^,;]*|guid=[^,;]*,"), "");
}

/** A connection to the bus of this address, or to the next one there, which is yet to be started. The negative error number on failure. */
inline int prepareBus(SdBus& bus, const std::string& address)
{
    sd_bus* raw = nullptr;
    int result = sd_bus_new(&raw);
    bus.reset(raw);
    if (result >= 0)
        result = sd_bus_set_address(raw, withoutIdentity(address).c_str());
    return result >= 0 ? sd_bus_set_bus_client(raw, 1) : result;
}

} // namespace Platform
