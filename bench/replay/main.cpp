// A recording of the engine, played to the engine again, or printed.
#include "app/EngineStart.h"
#include "bench/replay/Follower.h"
#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"
#include "platform/screen/OverlayPeer.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <juce_gui_basics/juce_gui_basics.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;
using namespace Replay;
using Platform::Record;
using Platform::Step;

constexpr int unusable = 2;
constexpr int millionth = 1'000'000;
/** Of a step that is listed, in bytes. */
constexpr std::size_t longestField = 60;

void print(const RecordingFiles& files, const Record& record)
{
    std::printf("%5lld.%06lld  %-15s %s\n", static_cast<long long>(record.time / millionth),
                static_cast<long long>(record.time % millionth), files.threadName(record).c_str(),
                Platform::describe(record, longestField).c_str());
}

/** As far as it can be seen where it differs, which is at this byte. */
std::string excerpt(const std::string& text, std::size_t place)
{
    constexpr std::size_t longest = 400, before = 200;
    if (text.size() <= longest)
        return text;
    const auto isInside = [&](std::size_t index) { return index < text.size() && (text[index] & 0xC0) == 0x80; };
    std::size_t begin = place > before ? place - before : 0;
    for (; isInside(begin); ++begin)
        ;
    auto end = std::min(text.size(), begin + longest);
    for (; isInside(end); ++end)
        ;
    return (begin > 0 ? "... " : "") + text.substr(begin, end - begin) + (end < text.size() ? " ..." : "");
}

/** A folder for the files that the engine finds at its start, removed at the end. */
class UnitFolder
{
public:
    UnitFolder()
    {
        path = (fs::temp_directory_path() / "headunit-replay-XXXXXX").string();
        if (::mkdtemp(path.data()) == nullptr)
            path.clear();
        // Other programs of this machine have a table of their own.
        ::setenv("HEADUNIT_SYSINFO", table.c_str(), 1);
    }
    ~UnitFolder()
    {
        ::shm_unlink(table.c_str());
        std::error_code ignored;
        if (!path.empty())
            fs::remove_all(path, ignored);
    }
    UnitFolder(const UnitFolder&) = delete;
    UnitFolder& operator=(const UnitFolder&) = delete;

    /** Empty on success. */
    std::string fill(const RecordingFiles& files)
    {
        if (path.empty())
            return std::string("no folder for the replay: ") + std::strerror(errno);
        for (const auto* folder : { "system", "application", "registry" })
            fs::create_directory(path + "/" + folder);
        for (const auto& record : files.records)
            if (record.step == Step::configuration)
            {
                if (auto error = configure(record); !error.empty())
                    return error;
            }
            else if (record.step == Step::file)
            {
                if (auto error = unpack(record); !error.empty())
                    return error;
            }
        return {};
    }

private:
    std::string path;
    const std::string table = "/headunit-replay-" + std::to_string(::getpid());

    std::string configure(const Record& record)
    {
        Platform::FieldReader reader(record.fields);
        const std::string name(reader.bytes()), text(reader.bytes()), system(reader.bytes());
        if (auto error = Platform::Configuration::loadText(name, text); !error.empty())
            return error;
        auto& unit = Platform::Configuration::get();
        const juce::String here = path + "/";
        unit.osVersion = system;
        unit.systemPath = here + "system/";
        unit.applicationPath = here + "application/";
        unit.registryPath = here + "registry/";
        unit.cameraHoldFile = here + "camera-hold";
        unit.resourcePath = (fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "resources/").string();
        unit.display = "none";
        return {};
    }

    std::string unpack(const Record& record) const
    {
        Platform::FieldReader reader(record.fields);
        const std::string folder(reader.bytes()), name(reader.bytes());
        const auto offset = reader.number();
        const auto bytes = reader.bytes();
        const auto target = (fs::path(path) / folder / name).lexically_normal();
        // A damaged or foreign recording writes nothing elsewhere.
        if (!target.string().starts_with(path + "/") || !reader.good())
            return "a file of the recording has no usable name: " + name;
        fs::create_directories(target.parent_path());
        std::ofstream file(target, std::ios::binary | (offset == 0 ? std::ios::trunc : std::ios::app));
        return file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()))
                   ? ""
                   : target.string() + ": cannot be written";
    }
};

/** The engine looks for it before it asks it to quit, which ends the recording. */
class Application : public juce::JUCEApplication
{
    const juce::String getApplicationName() override { return "headunit-replay"; }
    const juce::String getApplicationVersion() override { return {}; }
    void initialise(const juce::String&) override {}
    void shutdown() override {}
};

bool keepNothing(const char*, int, const char*, const char*, va_list)
{
    return true;
}

bool printLine(const char* file, int, const char*, const char* format, va_list arguments)
{
    std::printf("%14s %s: ", "log", file);
    std::vprintf(format, arguments);
    std::printf("\n");
    return true;
}

void printBefore(const RecordingFiles& files, std::size_t at, int before)
{
    for (auto index = at - std::min(at, static_cast<std::size_t>(before)); index < at; ++index)
        print(files, files.records[index]);
}

double secondsAt(const RecordingFiles& files, std::size_t index)
{
    return static_cast<double>(files.records[index].time) / millionth;
}

void tellDifference(const RecordingFiles& files, std::size_t at, const std::string& now)
{
    const auto& record = files.records[at];
    const auto recorded = Platform::describe(record);
    const auto place = static_cast<std::size_t>(std::ranges::mismatch(recorded, now).in1 - recorded.begin());
    std::printf("✗ step %zu, %.6f s, thread %s\n  recorded: %s\n  now:      %s\n", at, secondsAt(files, at),
                files.threadName(record).c_str(), excerpt(recorded, place).c_str(), excerpt(now, place).c_str());
}

/** The exit status. */
int replay(const RecordingFiles& files, std::atomic<std::size_t>& place, bool withLog, int before)
{
    const auto entry = withLog ? printLine : keepNothing;
    Platform::Logger::getInstance()->redirect(entry, entry, entry, entry);
    // What the engine prints is for its own standard error.
    if (const int nowhere = ::open("/dev/null", O_WRONLY); nowhere >= 0)
        ::dup2(nowhere, STDERR_FILENO);
    // None of them is taken down: the process ends with the replay.
    constexpr std::uint64_t anySeed = 1;
    auto& scheduler = *new Scheduler(anySeed);
    auto& follower = *new Follower(scheduler, files, place);
    new juce::ScopedJuceInitialiser_GUI;
    Platform::keepFrameworkOffDisplay();
    new Application;
    auto& start = *new EngineStart;
    const auto wall = std::chrono::steady_clock::now();
    scheduler.messageThread().post([&start] { start.begin(); });
    follower.follow();
    const auto took = std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count();
    if (!follower.difference().empty())
    {
        printBefore(files, place, before);
        tellDifference(files, place, follower.difference());
        return 1;
    }
    const std::size_t done = place;
    const auto seconds = done == 0 ? 0 : secondsAt(files, done - 1);
    std::printf("✓ %zu steps of %.1f s, as recorded by version %s; replayed in %.2f s, %.0f times real time\n", done,
                seconds, files.engine.c_str(), took, seconds / took);
    if (files.gap < files.records.size())
        std::printf("  What follows cannot be replayed: something is missing before it.\n");
    return 0;
}

/** The same in a process of its own, so that a fault of the engine ends only that, and its place is told. */
int replayApart(const RecordingFiles& files, bool withLog, int before)
{
    UnitFolder folder;
    if (const auto error = folder.fill(files); !error.empty())
    {
        std::cerr << error << "\n";
        return unusable;
    }
    using Place = std::atomic<std::size_t>;
    auto* memory = ::mmap(nullptr, sizeof(Place), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* place = memory == MAP_FAILED ? nullptr : new (memory) Place(0);
    std::fflush(stdout);
    const auto child = place == nullptr ? -1 : ::fork();
    if (child == 0)
    {
        const int status = replay(files, *place, withLog, before);
        std::fflush(stdout);
        ::_exit(status);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) < 0)
    {
        std::cerr << "no process for the replay: " << std::strerror(errno) << "\n";
        return unusable;
    }
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    const std::size_t at = *place;
    printBefore(files, at, before);
    std::printf("✗ before step %zu, %.6f s: the engine ends by a fault: %s\n", at,
                at == 0 ? 0 : secondsAt(files, at - 1), ::strsignal(WTERMSIG(status)));
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    std::string file;
    bool show = false, withLog = false;
    int before = 20;
    CLI::App app { "Plays a recording of the engine to the engine: the first step that is not as it was is named.",
                   "headunit-bench replay" };
    app.add_option("file", file, "What headunit-engine --record has written; FILE.1 and so on lie beside it")
        ->required();
    app.add_flag("--show", show, "Print the recording instead");
    app.add_flag("--log", withLog, "Print what the engine logs");
    app.add_option("--before", before, "So many steps before a difference are printed")
        ->capture_default_str()
        ->check(CLI::NonNegativeNumber);
    CLI11_PARSE(app, argc, argv);

    RecordingFiles files;
    if (const auto error = files.load(file); !error.empty())
    {
        std::cerr << error << "\n";
        return unusable;
    }
    int status = 0;
    if (show)
        for (const auto& record : files.records)
            print(files, record);
    else
        status = replayApart(files, withLog, before);
    for (const auto& note : files.notes)
        std::printf("  %s\n", note.c_str());
    std::fflush(stdout);
    ::_exit(status);
}
