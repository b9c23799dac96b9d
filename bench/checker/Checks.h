#pragma once

#include "bench/checker/Exchange.h"

#include <span>

namespace Checker
{

/** One way in which the engine, or its absence, meets a program. */
struct Check
{
    const char* name; ///< what is tried, the program being the subject of the sentence
    /** False when the program did not come to the end of it. */
    bool (*play)(Exchange&);
};

/** In the order of a program's life. What the first two find out the others need. */
std::span<const Check> allChecks();

} // namespace Checker
