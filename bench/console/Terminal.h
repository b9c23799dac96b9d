#pragma once

#include "bench/console/Console.h"

namespace Bench
{

/** Talks with a person at the terminal until the person leaves or the journal is interrupted for good. */
void converse(Console& console);

} // namespace Bench
