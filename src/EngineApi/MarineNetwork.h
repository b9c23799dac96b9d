#pragma once

#include "platform/Bundle.h"

namespace EngineApi
{

/** Sends of NMEA 2000 data that source programs ask for. Reached through Provided<MarineNetwork>. Any thread. */
class MarineNetwork
{
public:
    virtual ~MarineNetwork() = default;
    /** One operation per message id RMSG_N2K_TX, RMSG_N2K_TX_2, RMSG_N2K_TX_3 (0, 1, 2). */
    virtual void transmit(int operation, const Platform::Bundle::Ptr& bundle) = 0;
};

} // namespace EngineApi
