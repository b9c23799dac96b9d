// Makes the resources of the engine from their sources, at build time and without a display.
#include "Chime.h"
#include "Pack.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <juce_events/juce_events.h>

namespace
{

juce::File fileOf(const std::string& path)
{
    return juce::File::getCurrentWorkingDirectory().getChildFile(juce::String(path));
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app { "Makes the resources of the engine from their sources." };
    app.require_subcommand(1);
    std::string source;
    std::string target;
    std::string fonts;
    auto* pack = app.add_subcommand("pack", "a resource pack from a folder of layouts, drawings and other files");
    pack->add_option("folder", source)->required()->check(CLI::ExistingDirectory);
    pack->add_option("pack", target)->required();
    pack->add_option("--fonts", fonts, "the folder of the fonts that drawings use")->check(CLI::ExistingDirectory);
    auto* chime = app.add_subcommand("chime", "a sound from its description");
    chime->add_option("description", source)->required()->check(CLI::ExistingFile);
    chime->add_option("wav", target)->required();
    CLI11_PARSE(app, argc, argv);

    // No other font than these, or the pictures would depend on the machine.
    if (!fonts.empty())
        setenv("JUCE_FONT_PATH", fonts.c_str(), 1);
    const juce::ScopedJuceInitialiser_GUI libraryInitialiser;
    const auto result = *pack ? makePack(fileOf(source), fileOf(target)) : makeChime(fileOf(source), fileOf(target));
    if (result.wasOk())
        return EXIT_SUCCESS;
    std::fprintf(stderr, "headunit-respack: %s\n", result.getErrorMessage().toRawUTF8());
    return EXIT_FAILURE;
}
