#pragma once

#include "bench/console/Watch.h"

namespace Bench
{

/**
    Draws the unit again and again on a screen of the terminal's own, as large as that is, until a key is pressed, the journal is
    interrupted or the time is over. What was on the terminal before is there again afterwards.
*/
void showLive(Unit& unit, const Style& style, std::optional<std::chrono::milliseconds> duration);

} // namespace Bench
