#include "bench/panel/PagesPane.h"

namespace BenchPanel
{

PagesPane::PagesPane(Desk& deskToUse)
    : Area(deskToUse, "Pages and why")
{
}

void PagesPane::show(const PanelState&) {}

} // namespace BenchPanel
