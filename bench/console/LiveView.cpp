#include "bench/console/LiveView.h"

#include <iostream>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace Bench
{

namespace
{

/** While it lives, keys are read as they are pressed, and there is a screen without a cursor to draw on. */
class OwnScreen
{
public:
    OwnScreen()
    {
        ::tcgetattr(STDIN_FILENO, &before);
        auto raw = before;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        ::tcsetattr(STDIN_FILENO, TCSANOW, &raw);
        std::cout << "\033[?1049h\033[?25l";
    }
    ~OwnScreen()
    {
        ::tcsetattr(STDIN_FILENO, TCSANOW, &before);
        std::cout << "\033[?25h\033[?1049l" << std::flush;
    }
    OwnScreen(const OwnScreen&) = delete;
    OwnScreen& operator=(const OwnScreen&) = delete;

    static Extent extent()
    {
        winsize size {};
        const bool isKnown = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0;
        return isKnown ? Extent { size.ws_col, size.ws_row } : Extent { 80, 24 };
    }

    /** Over the last frame, so that nothing flickers. */
    static void draw(const std::vector<std::string>& lines)
    {
        for (std::size_t i = 0; i < lines.size(); ++i)
            std::cout << "\033[" << i + 1 << ";1H" << lines[i] << "\033[K";
        std::cout << "\033[J" << std::flush;
    }

    /** True when a key came within this time; it is taken. */
    static bool waitForKey(std::chrono::milliseconds limit)
    {
        pollfd input { STDIN_FILENO, POLLIN, 0 };
        if (::poll(&input, 1, static_cast<int>(limit.count())) <= 0)
            return false;
        char key = 0;
        [[maybe_unused]] const auto taken = ::read(STDIN_FILENO, &key, 1);
        return true;
    }

private:
    termios before {};
};

} // namespace

void showLive(Unit& unit, const Style& style, std::optional<std::chrono::milliseconds> duration)
{
    constexpr std::chrono::milliseconds redrawEvery { 250 };
    const OwnScreen screen;
    const auto end = duration ? Clock::now() + *duration : Clock::time_point::max();
    do
        OwnScreen::draw(composeWatch(unit, style, OwnScreen::extent()));
    while (!OwnScreen::waitForKey(redrawEvery) && !unit.journal.isInterrupted() && Clock::now() < end);
}

} // namespace Bench
