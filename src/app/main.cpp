#include "app/MainApplication.h"

#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/screen/OverlayPeer.h"

#include <CLI/CLI.hpp>
#include <csignal>

namespace
{

constexpr int badConfiguration = 2;

juce::JUCEApplicationBase* createApplication()
{
    Platform::keepFrameworkOffDisplay();
    return new MainApplication();
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App arguments { "The main process of the head unit.", "headunit-engine" };
    std::string configurationFile = "/etc/headunit/engine.toml";
    arguments.add_option("--config", configurationFile, "configuration file")->capture_default_str();
    arguments.set_version_flag("--version", std::string("headunit-engine ") + HEADUNIT_VERSION);
    CLI11_PARSE(arguments, argc, argv);

    if (const auto error = Platform::Configuration::load(configurationFile); !error.empty())
    {
        std::fprintf(stderr, "headunit-engine: %s\n", error.c_str());
        return badConfiguration;
    }
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
    // A program that goes away while it is written to is an error of that write, no more.
    std::signal(SIGPIPE, SIG_IGN);

    juce::JUCEApplicationBase::createInstance = createApplication;
    const char* frameworkArguments[] = { argv[0] };
    return juce::JUCEApplicationBase::main(1, frameworkArguments);
}
