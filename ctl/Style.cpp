#include "ctl/Style.h"

#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Ctl
{

Style Style::ofOutput()
{
    if (::isatty(STDOUT_FILENO) != 1)
        return Style(false);
    const auto* noColour = std::getenv("NO_COLOR");
    const auto* terminal = std::getenv("TERM");
    const bool wanted = noColour == nullptr || *noColour == 0;
    const bool able = terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
    winsize size {};
    const bool isKnown = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0;
    return Style(wanted && able, isKnown ? size.ws_col : 0);
}

} // namespace Ctl
