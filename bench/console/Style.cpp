#include "bench/console/Style.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace Bench
{

Style Style::forOutput()
{
    const auto* noColour = std::getenv("NO_COLOR");
    const auto* terminal = std::getenv("TERM");
    const bool wanted = noColour == nullptr || *noColour == 0;
    const bool able = terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
    return Style(wanted && able && ::isatty(STDOUT_FILENO) == 1);
}

} // namespace Bench
