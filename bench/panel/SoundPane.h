#pragma once

#include "bench/panel/Area.h"

namespace BenchPanel
{

/** What the DSP does to sound: its curve, the level of the outputs, mute. */
class SoundPane : public Area
{
public:
    explicit SoundPane(Desk& deskToUse);

    void show(const PanelState& state) override;
};

} // namespace BenchPanel
