#pragma once

#include "diagnostics/Wire.h"

#include <stdexcept>
#include <string>
#include <vector>

/**
    What the engine says of itself, with the keys of docs/interfaces.md. Any thread that is an observer; each takes copies
    under the locks that exist, and where a lock is kept, says so under `busy`.
*/
namespace Diagnostics::Reports
{

Json state();
Json pages();
Json programs();
Json requests();
Json link();
Json remote();
Json dsp();
/** All for an empty name; throws Unknown. By its name, title or number. */
Json settings(const std::string& name);
Json groups();
Json queues();
Json counters();
Json latency();

/** Why nothing is heard, as far as the DSP says it: "muted by KeyManager" and so on. */
std::vector<std::string> muteReasons();

} // namespace Diagnostics::Reports

namespace Diagnostics
{

/** Asked for something that there is not; the text is a sentence for a person. */
struct Unknown : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

} // namespace Diagnostics
