#include "bench/console/Terminal.h"

#include "bench/console/ActiveFaults.h"
#include "bench/console/Verb.h"
#include "bench/console/Watch.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <poll.h>
#include <readline/history.h>
#include <readline/readline.h>
#include <termios.h>
#include <unistd.h>

namespace Bench
{

using namespace Pubhead;

namespace
{

Words completionCandidates;

char* nextCompletion(const char* text, int state)
{
    static std::size_t next = 0;
    if (state == 0)
        next = 0;
    while (next < completionCandidates.size())
        if (const auto& word = completionCandidates[next++]; word.starts_with(text))
            return ::strdup(word.c_str());
    return nullptr;
}

char** complete(const char* text, int start, int)
{
    rl_attempted_completion_over = 1; // never file names
    completionCandidates = completionsFor(parseLine(std::string(rl_line_buffer).substr(0, start)).words);
    return rl_completion_matches(text, nextCompletion);
}

/** Colours in a prompt are marked, so that readline does not count them. */
std::string markedPrompt(const std::string& text)
{
    std::string marked;
    bool inCode = false;
    for (const char c : text)
    {
        if (c == '\033')
        {
            marked += RL_PROMPT_START_IGNORE;
            inCode = true;
        }
        marked += c;
        if (inCode && c == 'm')
        {
            marked += RL_PROMPT_END_IGNORE;
            inCode = false;
        }
    }
    return marked;
}

/** One line: what the unit is doing. */
std::string promptState(Unit& unit, const Style& style)
{
    const auto mcu = unit.mcu->state();
    const auto front = unit.programs.pageInFront();
    const auto running = unit.programs.running().size();
    const auto source = mcu.source ? sourceName(*mcu.source) : std::string("no source");
    auto text = mcu.silent   ? style.warning("mcu silent")
                : mcu.agreed ? style.good(source)
                             : style.warning(mcu.wanted ? source + " → " + sourceName(*mcu.wanted) : source);
    text += style.dim(" · ") + (front == NUM_OF_PAGES ? style.dim("no page") : style.bold(pageName(front)));
    text += style.dim(" · " + std::to_string(running) + (running == 1 ? " program" : " programs"));
    for (const auto& fault : activeFaults(unit))
        text += style.dim(" · ") + style.warning(fault.what);
    return unit.engine().isRunning() ? text : style.bad("engine off") + style.dim(" · ") + text;
}

/** Reads keys while it lives as they are pressed, and hides the cursor. */
class RawTerminal
{
public:
    RawTerminal()
    {
        ::tcgetattr(STDIN_FILENO, &before);
        auto raw = before;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        ::tcsetattr(STDIN_FILENO, TCSANOW, &raw);
        std::cout << "\033[?25l\033[2J";
    }
    ~RawTerminal()
    {
        ::tcsetattr(STDIN_FILENO, TCSANOW, &before);
        std::cout << "\033[?25h" << std::flush;
    }
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;

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

/** Draws the unit again and again. */
void showLive(Unit& unit, const Style& style, std::optional<std::chrono::milliseconds> duration)
{
    constexpr std::chrono::milliseconds redrawEvery { 250 };
    const RawTerminal terminal;
    const auto end = duration ? Clock::now() + *duration : Clock::time_point::max();
    do
    {
        std::cout << "\033[H"; // over the last frame, so that nothing flickers
        for (const auto& line : composeWatch(unit, style))
            std::cout << line << "\033[K\n";
        std::cout << style.dim("  Any key ends it.") << "\033[J" << std::flush;
    } while (!RawTerminal::waitForKey(redrawEvery) && !unit.journal.isInterrupted() && Clock::now() < end);
    std::cout << "\n";
}

} // namespace

void converse(Console& console)
{
    auto& unit = console.unit;
    const auto& style = console.style;
    const auto& journal = unit.journal;
    if (console.watched)
        console.liveView = [&](auto duration) { showLive(unit, style, duration); };
    rl_readline_name = "headunit-bench";
    rl_attempted_completion_function = complete;
    rl_catch_signals = 0;
    ::using_history();
    // With the signals blocked, readline would not leave on one: it looks here ten times a second while nobody types.
    static const Journal* watchedJournal = nullptr;
    watchedJournal = &journal;
    rl_event_hook = []
    {
        if (watchedJournal->isInterrupted())
            rl_done = 1;
        return 0;
    };
    while (!journal.isInterrupted())
    {
        char* line = ::readline(markedPrompt(promptState(unit, style) + style.accent(" › ")).c_str());
        if (line == nullptr || journal.isInterrupted())
        {
            std::cout << "\n";
            std::free(line);
            return;
        }
        const std::string text = line;
        std::free(line);
        if (text.find_first_not_of(" \t") != std::string::npos)
            ::add_history(text.c_str());
        const auto outcome = runLine(console, text);
        if (outcome.kind == Outcome::leave)
            return;
        if (outcome.kind == Outcome::failed)
            std::cout << style.bad(outcome.error) << "\n";
    }
}

} // namespace Bench
