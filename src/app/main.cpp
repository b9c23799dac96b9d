#include "app/MainApplication.h"

#include "check/Check.h"
#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/record/RecordWriter.h"
#include "platform/screen/OverlayPeer.h"

#include <CLI/CLI.hpp>
#include <csignal>

namespace
{

constexpr int badConfiguration = 2;
constexpr std::uint64_t bytesPerMebibyte = 1024 * 1024;

juce::JUCEApplicationBase* createApplication()
{
    Platform::keepFrameworkOffDisplay();
    return new MainApplication();
}

/** Empty on success: from here on every step is recorded, until the process ends. */
std::string record(const Platform::RecordWriter::Options& options)
{
    // Never destroyed: threads may take steps until the process is gone. An end by a fault comes along here, too.
    static Platform::RecordWriter* writer = nullptr;
    std::string error;
    writer = Platform::RecordWriter::open(options, error).release();
    if (writer == nullptr)
        return error;
    const auto flush = [] { writer->flush(); };
    std::atexit(flush);
    std::at_quick_exit(flush);
    Platform::Recorder::setActive(writer);
    return {};
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App arguments { "The main process of the head unit.", "headunit-engine" };
    std::string configurationFile = "/etc/headunit/engine.toml";
    arguments.add_option("--config", configurationFile, "configuration file")->capture_default_str();
    bool isChecked = false;
    auto* check = arguments.add_flag(
        "--check", isChecked,
        "look whether all that the unit needs is there and works, print that and end: status 0 if so, 1 if not");
    arguments.set_version_flag("--version", std::string("headunit-engine ") + HEADUNIT_VERSION);
    Platform::RecordWriter::Options recording {
        .file = {}, .configuration = {}, .engine = HEADUNIT_VERSION, .limit = 64
    };
    arguments
        .add_option("--record", recording.file,
                    "record every step between the engine and its surroundings, in FILE, FILE.1 and so on")
        ->excludes(check);
    arguments.add_option("--record-limit", recording.limit, "MiB of these files together, at least 1")
        ->capture_default_str()
        ->check(CLI::Range(1, 1024 * 1024))
        ->needs("--record");
    CLI11_PARSE(arguments, argc, argv);

    if (const auto error = Platform::Configuration::load(configurationFile); !error.empty())
    {
        std::fprintf(stderr, "headunit-engine: %s\n", error.c_str());
        return badConfiguration;
    }
    if (isChecked)
        return Check::run(configurationFile);
    TerminationSignal::catchEarly();
    // The clock on the boat shows standard time. Other threads, which may read the environment, start with the
    // framework.
    Platform::disableDaylightSaving();
    const auto onlyEngine = Platform::InstanceLock::take();
    if (onlyEngine == nullptr)
    {
        std::fprintf(stderr, "headunit-engine: another engine of this unit is running: it holds %sengine.lock\n",
                     Platform::Configuration::get().registryPath.toRawUTF8());
        return EXIT_FAILURE;
    }
    Platform::Logger::getInstance()->useStandardError();
    recording.configuration = configurationFile;
    recording.limit *= bytesPerMebibyte;
    if (const auto error = recording.file.empty() ? "" : record(recording); !error.empty())
    {
        std::fprintf(stderr, "headunit-engine: %s\n", error.c_str());
        return EXIT_FAILURE;
    }
    // A program that goes away while it is written to is an error of that write, no more.
    std::signal(SIGPIPE, SIG_IGN);

    juce::JUCEApplicationBase::createInstance = createApplication;
    const char* frameworkArguments[] = { argv[0] };
    return juce::JUCEApplicationBase::main(1, frameworkArguments);
}
