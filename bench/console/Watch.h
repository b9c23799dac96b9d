#pragma once

#include "bench/unit/Unit.h"
#include "ctl/Style.h"

namespace Bench
{

using Ctl::Style;

/** How much of a terminal there is, in characters. */
struct Extent
{
    int columns = 80;
    int rows = 0; ///< 0 for as many as it needs
};

/**
    The whole unit at a glance: one line of text each. It needs 80 columns and 24 rows; in more rows and from 120 columns on
    it tells the last events, too.
*/
std::vector<std::string> composeWatch(Unit& unit, const Style& style, Extent extent = {});

/** Frames of the link, both ways. */
std::string linkText(const Mcu::State& mcu);

} // namespace Bench
