#include "bench/panel/NetworkPane.h"

namespace BenchPanel
{

NetworkPane::NetworkPane(Desk& deskToUse)
    : Area(deskToUse, "Display on the network")
{
}

void NetworkPane::show(const PanelState&) {}

} // namespace BenchPanel
