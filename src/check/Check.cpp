#include "check/Check.h"

#include "check/Devices.h"
#include "check/Errors.h"
#include "check/Files.h"
#include "check/Surroundings.h"
#include "platform/base/System.h"
#include "platform/base/Threads.h"
#include "platform/screen/OverlayPeer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <juce_events/juce_events.h>
#include <pwd.h>
#include <unistd.h>

namespace Check
{

namespace
{

using Look = Rows (*)();

/** Far more than any device that works needs. */
constexpr int patienceMs = 8000;

class LookThread : public Platform::Thread
{
public:
    explicit LookThread(Look toDo)
        : Thread("check")
        , look(toDo)
    {
    }

    void run() override { rows = look(); }

    Rows rows;

private:
    const Look look;
};

/** On a thread of its own, which is left where it is when something in it hangs. */
Rows within(const char* what, Look look)
{
    auto thread = std::make_unique<LookThread>(look);
    Errors::take({}); // what an earlier thread has left behind
    if (!thread->startThread())
        return { { what, State::missing, "the system gives no thread", "look at the limits of processes" } };
    if (Platform::awaitEnd(*thread, patienceMs))
        return std::move(thread->rows);
    static_cast<void>(thread.release());
    return { { what, State::missing, "no answer within " + std::to_string(patienceMs / 1000) + " seconds",
               "look at the kernel's log (dmesg), which says what hangs" } };
}

struct Subject
{
    const char* title; ///< subjects with the same one in a row are one group
    const char* what;
    Look look;
    bool isOfEngine = false; ///< a running engine has it alone
};

constexpr std::array subjects {
    Subject { "Folders", "folders", folders },
    Subject { "Resources", "resources", resources },
    Subject { "Resources", "DSP images", dspImages },
    Subject { "Devices", "microcontroller", link, true },
    Subject { "Devices", "wired remote", wiredRemote, true },
    Subject { "Devices", "DSP", dsp, true },
    Subject { "Devices", "video decoder", videoDecoder },
    Subject { "Devices", "lines", lines },
    Subject { "System", "message bus", bus },
    Subject { "System", "sockets", sockets },
    Subject { "System", "update keys", updateKeys },
    Subject { "System", "display", display },
    Subject { "System", "log library", logLibrary },
    Subject { "System", "sound card", soundCard },
    Subject { "System", "real-time priority", priority },
    Subject { "Programs", "programs", programs },
};

std::string userName()
{
    const auto* user = ::getpwuid(::geteuid());
    return user != nullptr ? user->pw_name : std::to_string(::geteuid());
}

const char* nameOf(State state)
{
    return state == State::ok ? "ok" : state == State::note ? "note" : "missing";
}

const char* colourOf(State state)
{
    return state == State::ok ? "\033[32m" : state == State::note ? "\033[33m" : "\033[31m";
}

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

int countOf(const std::vector<Group>& groups, State state)
{
    int count = 0;
    for (const auto& group : groups)
        count += static_cast<int>(std::ranges::count(group.rows, state, &Row::state));
    return count;
}

} // namespace

std::vector<Group> lookAtUnit()
{
    // Held until all is looked at: an engine that starts meanwhile would take the devices.
    const auto lock = Platform::InstanceLock::takeExisting();
    const bool engineRuns = lock == nullptr;
    std::vector<Group> groups;
    if (engineRuns)
        groups.push_back(
            { "Engine",
              { { "engine", State::note,
                  "an engine of this unit runs, or this user cannot tell: its ports and its SPI bus are left alone",
                  "ask it: headunit-ctl link, headunit-ctl dsp; or stop it and check again, as the user that it runs "
                  "as" } } });
    for (const auto& subject : subjects)
    {
        if (groups.empty() || groups.back().title != subject.title)
            groups.push_back({ subject.title, {} });
        auto rows = engineRuns && subject.isOfEngine ? Rows { { subject.what, State::note, "left alone", {} } }
                                                     : within(subject.what, subject.look);
        std::ranges::move(rows, std::back_inserter(groups.back().rows));
    }
    return groups;
}

std::string tableOf(const std::vector<Group>& groups, bool isColoured)
{
    std::size_t widest = 0;
    for (const auto& group : groups)
        for (const auto& row : group.rows)
            widest = std::max(widest, row.what.size());
    const auto coloured = [isColoured](const char* colour, const std::string& text)
    { return isColoured ? colour + text + "\033[0m" : text; };
    constexpr std::size_t stateWidth = 7;
    std::string table;
    for (const auto& [title, rows] : groups)
    {
        table += "\n" + coloured("\033[1m", title) + "\n";
        for (const auto& row : rows)
        {
            table += "  " + coloured(colourOf(row.state), padded(nameOf(row.state), stateWidth)) + "  " +
                     padded(row.what, widest) + "  " + row.found + "\n";
            if (!row.whatToDo.empty())
                table += std::string(stateWidth + widest + 6, ' ') + "-> " + row.whatToDo + "\n";
        }
    }
    return table;
}

int run(const std::string& configurationFile)
{
    Platform::keepFrameworkOffDisplay();
    const juce::ScopedJuceInitialiser_GUI framework; // the sound card's classes want it
    Errors::keep();
    std::printf("Configuration %s is well formed. This is looked at as user %s%s.\n", configurationFile.c_str(),
                userName().c_str(), ::geteuid() == 0 ? ", who may more than the service's user headunit" : "");
    std::fflush(stdout);
    const auto groups = lookAtUnit();
    const int missing = countOf(groups, State::missing), notes = countOf(groups, State::note);
    std::printf("%s\n%s: %d missing, %d to note.\n", tableOf(groups, ::isatty(STDOUT_FILENO) == 1).c_str(),
                missing == 0 ? "All that the unit needs is there" : "The unit lacks something", missing, notes);
    std::fflush(stdout);
    const int status = missing == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    if (Platform::hasStragglers())
        std::quick_exit(status);
    return status;
}

} // namespace Check
