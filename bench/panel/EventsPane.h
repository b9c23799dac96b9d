#pragma once

#include "bench/panel/Area.h"

namespace BenchPanel
{

/** What happens, the newest below. */
class EventsPane : public Area
{
public:
    explicit EventsPane(Desk& deskToUse);

    void show(const PanelState& state) override;
};

} // namespace BenchPanel
