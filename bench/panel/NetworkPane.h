#pragma once

#include "bench/panel/Area.h"

namespace BenchPanel
{

/** What a display on the boat's network sees of the unit, and does with it. */
class NetworkPane : public Area
{
public:
    explicit NetworkPane(Desk& deskToUse);

    void show(const PanelState& state) override;
};

} // namespace BenchPanel
