#include "EngineLayer/devices/SourceAgreement.h"

#include <utility>

namespace EngineLayer
{

SourceAgreement::Request SourceAgreement::mcuRequests(McuSource source)
{
    if (source == pending)
    {
        agreed = true;
        return Request::repeated;
    }
    pending = source;
    isPendingOfMcu = true;
    agreed = firstRequestSeen;
    if (firstRequestSeen)
        return Request::schedule;
    firstRequestSeen = true;
    return Request::first;
}

void SourceAgreement::mcuConfirms(McuSource source)
{
    confirmed = source;
    if (source == pending)
        agreed = true;
}

std::optional<McuSource> SourceAgreement::takeLost()
{
    const bool isLost = current.isComplete() && current != confirmed;
    if (!std::exchange(wasLost, isLost) || !isLost)
        return {};
    pending = current;
    isPendingOfMcu = false;
    agreed = false;
    return current;
}

SourceAgreement::Report SourceAgreement::unitSwitchedTo(McuSource source)
{
    current = source;
    if (agreed)
    {
        pending = source;
        isPendingOfMcu = false;
        agreed = false;
        confirmed = {}; // it may follow, and its answer be lost
        return Report::ask;
    }
    if (source != pending)
        return Report::nothing;
    agreed = true;
    // A microcontroller that has not asked for it does not take it from this.
    if (isPendingOfMcu)
        confirmed = source;
    return Report::confirm;
}

} // namespace EngineLayer
