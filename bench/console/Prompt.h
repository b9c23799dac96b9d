#pragma once

#include "bench/unit/Unit.h"
#include "ctl/Style.h"

namespace Bench
{

/** What the unit does, and what is wrong with it, in one line: "fm plays · FM in front · 3 programs". Any thread. */
std::string promptText(Unit& unit, const Ctl::Style& style);

} // namespace Bench
