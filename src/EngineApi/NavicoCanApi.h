#pragma once

#include "platform/base/Bundle.h"
#include "platform/marine/Parcel.h"

/** What goes to the boat's network, through the microcontroller. Any thread; no call waits for it. */
namespace EngineApi
{

/** The bundle's bytes as a data block; nothing for a null bundle or one without bytes. */
void sendCanData(const Platform::Bundle::Ptr& bundle);
/** The bundle's bytes as a message of the network, as a source program has made it. */
void sendPgnBundle(const Platform::Bundle::Ptr& bundle);
/**
    A message of the engine's own, in front of what waits; about a zone it takes the place of an older one. The parcel
    is empty afterwards.
*/
void sendPgnParcel(Platform::Parcel& parcel);
/** The bundle's bytes as what the playing source program tells of its media. */
void sendMediaInfo(const Platform::Bundle::Ptr& bundle);

} // namespace EngineApi
