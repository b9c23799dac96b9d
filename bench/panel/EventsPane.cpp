#include "bench/panel/EventsPane.h"

namespace BenchPanel
{

EventsPane::EventsPane(Desk& deskToUse)
    : Area(deskToUse, "Events")
{
}

void EventsPane::show(const PanelState&) {}

} // namespace BenchPanel
