#pragma once

#include "platform/base/Bundle.h"
#include "platform/marine/Parcel.h"

/** Sends messages to the boat's network, through the microcontroller. Any thread; no call waits for it. */
namespace EngineApi
{

/** Sends the bundle's bytes as a data block. Does nothing for a null bundle or one without bytes, as the next two. */
void sendCanData(const Platform::Bundle::Ptr& bundle);
/** Sends the bundle's bytes as a whole message of the network, made by a source program. */
void sendPgnBundle(const Platform::Bundle::Ptr& bundle);
/**
    Sends a message of the engine in front of what waits. It replaces a waiting one about the same zone. The parcel is
    empty afterwards.
*/
void sendPgnParcel(Platform::Parcel& parcel);
/** Sends the bundle's bytes as media information of the source program that plays. */
void sendMediaInfo(const Platform::Bundle::Ptr& bundle);

} // namespace EngineApi
