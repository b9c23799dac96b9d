// Stands for any source program of the unit. The name that it is started by says which: AppRadio, AppEQ ...
#include "bench/program/PageView.h"
#include "bench/program/SourceProgram.h"
#include "bench/text/Names.h"
#include "platform/config/Configuration.h"
#include "platform/settings/SetupStore.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

namespace
{

std::string environmentValue(const char* name)
{
    const auto* value = std::getenv(name);
    return value != nullptr ? value : "";
}

/** The unit's own configuration is beside the control socket; without a unit it is the one that a unit begins with. */
void readConfiguration(const std::filesystem::path& control, const std::filesystem::path& startedAs)
{
    auto& configuration = Platform::Configuration::get();
    const auto ofUnit = control.parent_path() / "engine.toml";
    std::error_code ignored;
    if (!control.empty() && std::filesystem::exists(ofUnit, ignored))
    {
        // It may be a link to the real one, whose folder relative paths are taken from.
        const auto real = std::filesystem::canonical(ofUnit, ignored);
        if (const auto error = Platform::Configuration::load(real.string()); !error.empty())
            std::cerr << error << "\n";
        return;
    }
    const auto own = std::filesystem::temp_directory_path(ignored) / ("headunit-page-" + std::to_string(::getpid()));
    configuration.systemPath = own.string() + "/";
    configuration.resourcePath = (startedAs.parent_path().parent_path() / "resources").string() + "/";
}

/** Without a display of the unit the toolkit would take ":0", which may be anybody's, and end with it. */
void keepToOwnDisplay()
{
    if (environmentValue("DISPLAY").empty() || Platform::Configuration::get().display == "none")
        ::setenv("DISPLAY", ":none", 1);
}

/** The bench's control socket: as it says itself, else beside the folder that this program was started from. */
std::string controlPath(const std::string& startedAs)
{
    const auto named = environmentValue("HEADUNIT_BENCH_CONTROL");
    if (!named.empty())
        return named;
    const auto beside = std::filesystem::path(startedAs).parent_path().parent_path() / "control";
    std::error_code ignored;
    return std::filesystem::is_socket(beside, ignored) ? beside.string() : "";
}

/** What the command line asked for. */
struct Start
{
    int appType = Pubhead::AppUnknown;
    int pageAlone = Pubhead::NUM_OF_PAGES; ///< shown at once, without a unit
    std::string commandLine;
    std::string control;
};

Start start;

/** A JUCE application, so that the toolkit lives through what an X server without a window manager complains about. */
class ProgramApplication : public juce::JUCEApplication
{
public:
    const juce::String getApplicationName() override { return Pubhead::appTypeName(start.appType); }
    const juce::String getApplicationVersion() override { return {}; }
    bool moreThanOneInstanceAllowed() override { return true; }

    void initialise(const juce::String&) override
    {
        view = std::make_unique<BenchProgram::PageView>(Platform::IPCMsg::MessageHelper::getDestName(start.appType),
                                                        !juce::Desktop::getInstance().isHeadless());
        program = std::make_unique<BenchProgram::SourceProgram>(start.appType, start.commandLine, *view);
        view->content = [this](int page) { return program->getModel().content(page); };
        view->touched = [this](int page, int id) { program->getModel().touch(page, id); };
        view->missed = [this](juce::Point<int> where) { program->getModel().touchNothing(where.x, where.y); };
        view->chosen = [this](int page) { program->getModel().choosePage(page); };
        view->left = [this](int page) { program->getModel().leavePage(page); };
        if (start.pageAlone == Pubhead::NUM_OF_PAGES)
        {
            program->start(start.control);
            return;
        }
        view->setSource(start.pageAlone);
        view->show(start.pageAlone);
    }

    void shutdown() override
    {
        program.reset();
        view.reset();
    }

private:
    std::unique_ptr<BenchProgram::PageView> view;
    std::unique_ptr<BenchProgram::SourceProgram> program;
};

} // namespace

int main(int argc, char** argv)
{
    const std::string startedAs = argv[0];
    std::string name = std::filesystem::path(startedAs).filename().string();
    std::string page;
    CLI::App app { "Stands for a source program of the unit." };
    app.add_option("--app", name, "Which program to be (AppRadio ...); the name that it is started by otherwise");
    app.add_option("--command-line", start.commandLine, "What the engine starts it for, as JSON");
    app.add_option("--page", page, "Show this page at once, without a unit, to look at it");
    CLI11_PARSE(app, argc, argv);

    start.pageAlone = Bench::findPage(page);
    if (!page.empty() && start.pageAlone == Pubhead::NUM_OF_PAGES)
    {
        std::cerr << "there is no page '" << page << "'\n";
        return 2;
    }
    start.appType = page.empty() ? Bench::findApp(name) : Bench::pageInfo(start.pageAlone)->appType;
    if (start.appType == Pubhead::AppUnknown)
    {
        std::cerr << "'" << name << "' is no program of the unit: start it under such a name, or with --app\n";
        return 2;
    }
    Platform::VX_ReadSetupInfoOnly();
    start.control = controlPath(startedAs);
    readConfiguration(start.pageAlone == Pubhead::NUM_OF_PAGES ? start.control : "", startedAs);
    keepToOwnDisplay();
    juce::JUCEApplicationBase::createInstance = []() -> juce::JUCEApplicationBase* { return new ProgramApplication(); };
    return juce::JUCEApplicationBase::main(argc, const_cast<const char**>(argv));
}
