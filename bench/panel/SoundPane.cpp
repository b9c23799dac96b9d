#include "bench/panel/SoundPane.h"

namespace BenchPanel
{

SoundPane::SoundPane(Desk& deskToUse)
    : Area(deskToUse, "Sound")
{
}

void SoundPane::show(const PanelState&) {}

} // namespace BenchPanel
