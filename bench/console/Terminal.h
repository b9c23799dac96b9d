#pragma once

#include "bench/console/Console.h"

namespace Bench
{

/** Colours for standard output when it is a terminal that has them, unless NO_COLOR is set. */
Style styleOfOutput();

/** Talks with a person at the terminal until the person leaves or the journal is interrupted. */
void converse(Console& console);

} // namespace Bench
