// Stands for any source program of the unit. The name that it is started by says which: AppRadio, AppEQ ...
#include "bench/Names.h"
#include "bench/program/PageView.h"
#include "bench/program/SourceProgram.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace
{

std::string environmentValue(const char* name)
{
    const auto* value = std::getenv(name);
    return value != nullptr ? value : "";
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

} // namespace

int main(int argc, char** argv)
{
    const std::string startedAs = argv[0];
    std::string name = std::filesystem::path(startedAs).filename().string();
    std::string commandLine, page;
    CLI::App app {"Stands for a source program of the unit."};
    app.add_option("--app", name, "Which program to be (AppRadio ...); the name that it is started by otherwise");
    app.add_option("--command-line", commandLine, "What the engine starts it for, as JSON");
    app.add_option("--page", page, "Show this page at once, without a unit, to look at it");
    CLI11_PARSE(app, argc, argv);

    const auto shownAlone = Bench::findPage(page);
    if (!page.empty() && shownAlone == Pubhead::NUM_OF_PAGES)
    {
        std::cerr << "there is no page '" << page << "'\n";
        return 2;
    }
    const auto appType = page.empty() ? Bench::findApp(name) : Bench::pageInfo(shownAlone)->appType;
    if (appType == Pubhead::AppUnknown)
    {
        std::cerr << "'" << name << "' is no program of the unit: start it under such a name, or with --app\n";
        return 2;
    }

    const juce::ScopedJuceInitialiser_GUI framework;
    const bool draws = environmentValue("HEADUNIT_BENCH_DISPLAY") != "none" && !juce::Desktop::getInstance().isHeadless();
    BenchProgram::PageView view(Platform::IPCMsg::MessageHelper::getDestName(appType), draws);
    BenchProgram::SourceProgram program(appType, view);
    view.chosen = [&program](int chosen) { program.choosePage(chosen); };
    view.left = [&program](int left) { program.leavePage(left); };
    if (!page.empty())
    {
        view.setSource(shownAlone);
        view.show(shownAlone);
    }
    else
        program.start(commandLine, controlPath(startedAs));
    juce::MessageManager::getInstance()->runDispatchLoop();
    return 0;
}
