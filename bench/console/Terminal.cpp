#include "bench/console/Terminal.h"

#include "bench/console/LiveView.h"
#include "bench/console/Prompt.h"
#include "bench/console/Verb.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <readline/history.h>
#include <readline/readline.h>

namespace Bench
{

namespace
{

namespace fs = std::filesystem;

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
    const auto before = parseLine(std::string(rl_line_buffer).substr(0, static_cast<std::size_t>(start))).words;
    completionCandidates = completionsFor(before);
    // Where a file is wanted, readline goes on with its own names of files.
    rl_attempted_completion_over = mayBeFile(before) ? 0 : 1;
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

/** The lines of earlier runs, in the user's folder for such things; nothing is kept without one. */
class History
{
public:
    History()
        : file(findFile())
    {
        ::using_history();
        ::stifle_history(most);
        if (!file.empty())
            ::read_history(file.c_str());
    }

    void add(const std::string& line)
    {
        const auto* last = ::history_get(::history_base + ::history_length - 1);
        if (line.find_first_not_of(" \t") == std::string::npos || (last != nullptr && line == last->line))
            return;
        ::add_history(line.c_str());
        if (!file.empty() && ::append_history(1, file.c_str()) != 0) // a file that is not there yet
            ::write_history(file.c_str());
    }

    ~History()
    {
        if (!file.empty())
            ::history_truncate_file(file.c_str(), most);
    }
    History(const History&) = delete;
    History& operator=(const History&) = delete;

private:
    static constexpr int most = 1000;
    const std::string file;

    static std::string findFile()
    {
        const auto valueOf = [](const char* name) -> fs::path
        {
            const auto* value = std::getenv(name);
            return value != nullptr ? value : "";
        };
        const auto state = valueOf("XDG_STATE_HOME"), home = valueOf("HOME");
        if (state.empty() && home.empty())
            return {};
        const auto folder = (state.empty() ? home / ".local/state" : state) / "headunit-bench";
        std::error_code error;
        fs::create_directories(folder, error);
        return error ? "" : (folder / "history").string();
    }
};

/** What readline's hook needs, which takes nothing along. */
struct Shown
{
    Console& console;
    std::string prompt;

    std::string now() const
    {
        return markedPrompt(promptText(console.unit, console.style) + console.style.accent(" › "));
    }
};
Shown* shown = nullptr;

/** Ten times a second while nobody types: the prompt follows the unit, and an interrupt gives up the line. */
int lookAround()
{
    if (shown->console.unit.journal.isInterrupted())
    {
        rl_replace_line("", 0);
        rl_done = 1;
        return 0;
    }
    // A search has a prompt of its own.
    if (RL_ISSTATE(RL_STATE_ISEARCH | RL_STATE_NSEARCH))
        return 0;
    if (auto now = shown->now(); now != shown->prompt)
    {
        shown->prompt = std::move(now);
        ::rl_clear_visible_line();
        ::rl_set_prompt(shown->prompt.c_str());
        ::rl_on_new_line();
        ::rl_redisplay();
    }
    return 0;
}

} // namespace

void converse(Console& console)
{
    auto& journal = console.unit.journal;
    const auto& style = console.style;
    if (console.watched)
        console.liveView = [&](auto duration) { showLive(console.unit, style, duration); };
    rl_readline_name = "headunit-bench";
    rl_attempted_completion_function = complete;
    rl_catch_signals = 0;
    rl_event_hook = lookAround;
    History history;
    Shown promptShown { console, {} };
    shown = &promptShown;
    // Ctrl-C gives up what is typed or waited for; only an end of the program is for good.
    while (journal.goOn())
    {
        promptShown.prompt = promptShown.now();
        char* line = ::readline(promptShown.prompt.c_str());
        const bool leaves = line == nullptr; // Ctrl-D
        const std::string text = leaves ? "" : line;
        std::free(line);
        history.add(text);
        const auto outcome = leaves ? Outcome { Outcome::leave } : runLine(console, text);
        if (leaves || journal.isInterrupted())
            std::cout << "\n";
        if (outcome.kind == Outcome::leave)
            return;
        if (outcome.kind == Outcome::failed)
            std::cout << style.bad(outcome.error) << "\n";
    }
}

} // namespace Bench
