#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/LineButton.h"
#include "bench/panel/LineSlider.h"

namespace BenchPanel
{

/** What is plugged into the unit, and what the boat does. */
class AroundArea : public Area
{
public:
    explicit AroundArea(Desk& deskToUse);

    void show(const PanelState& state) override;

private:
    std::vector<std::unique_ptr<LineButton>> buttons;
    LineSlider battery;

    void resized() override;
};

} // namespace BenchPanel
