#pragma once

#include "bench/panel/Area.h"

namespace BenchPanel
{

/** Which page is in front and why, the last requests, and the programs. */
class PagesPane : public Area
{
public:
    explicit PagesPane(Desk& deskToUse);

    void show(const PanelState& state) override;
};

} // namespace BenchPanel
