#pragma once

#include "platform/channel/RemoteMessage.h"
#include "platform/channel/linux/IpcSdBus.h"

/**
    Bundles and messages as they stand in a bus message. Every call answers a negative errno on failure, as the bus
    library.
*/
namespace Platform::IpcWire
{

/** As a{sv}; an empty one for null. */
int append(sd_bus_message* target, const Bundle::Ptr& bundle);
/** Signature iiia{sv}. */
int append(sd_bus_message* target, const RemoteMessage& message);

/** Reads a{sv}. Values of types that bundles do not have are left out. */
int read(sd_bus_message* source, Bundle::Ptr& bundle);
/** Reads iiia{sv}; an empty dictionary stands for no bundle. The application type is left alone. */
int read(sd_bus_message* source, RemoteMessage& message);

} // namespace Platform::IpcWire
