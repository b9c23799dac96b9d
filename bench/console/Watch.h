#pragma once

#include "bench/unit/Unit.h"
#include "ctl/Style.h"

namespace Bench
{

using Ctl::Style;

/** The whole unit at a glance: one line of text each, 80 columns wide. */
std::vector<std::string> composeWatch(Unit& unit, const Style& style);

/** Frames of the link, both ways. */
std::string linkText(const Mcu::State& mcu);

} // namespace Bench
