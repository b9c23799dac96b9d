#include "EngineLayer/devices/SourceAgreement.h"

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
    agreed = firstRequestSeen;
    if (firstRequestSeen)
        return Request::schedule;
    firstRequestSeen = true;
    return Request::first;
}

void SourceAgreement::mcuConfirms(McuSource source)
{
    if (source == pending)
        agreed = true;
}

SourceAgreement::Report SourceAgreement::unitSwitchedTo(McuSource source)
{
    if (agreed)
    {
        pending = source;
        agreed = false;
        return Report::ask;
    }
    if (source != pending)
        return Report::nothing;
    agreed = true;
    return Report::confirm;
}

} // namespace EngineLayer
