#pragma once

#include "bench/unit/Journal.h"

namespace Bench
{

/** What an event is to a person who looks for what has happened. */
enum class Weight {
    telling,
    gain,    ///< a gain of the DSP, one of many at each change of the volume
    echo,    ///< of what another stream says, or of what the bench itself has sent
    regular, ///< comes again and again by itself
    detail   ///< see isDetail
};
Weight weightOf(const Event& event);

/** Of what comes by itself, heartbeats and acknowledgements, one each with how many came between two other events. */
std::vector<Event> folded(const std::vector<Event>& events);

} // namespace Bench
