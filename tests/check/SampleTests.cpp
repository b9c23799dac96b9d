#include "EngineApi/Catalogue.h"
#include "platform/config/Configuration.h"
#include "platform/devices/UnitLines.h"

#include <gmock/gmock.h>
#include <regex>

using Platform::Configuration;
using testing::Contains;
using testing::Key;
using testing::SizeIs;

/**
    A board's maker who takes the '#' off every line of the packaged configuration has said something about every key, line
    and page that there is, and nothing that the engine does not take.
*/
TEST(SampleTest, ThePackagedConfigurationShowsEveryKeyLineAndPage)
{
    const auto before = Configuration::get();
    const juce::File sample(HEADUNIT_SOURCE_DIR "/packaging/engine.toml");
    const auto text =
        std::regex_replace(sample.loadFileAsString().toStdString(), std::regex(R"(\n# ([A-Za-z0-9_]+ = \S))"), "\n$1");
    EXPECT_EQ(Configuration::loadText(sample.getFullPathName(), juce::String(text)), "");
    const auto loaded = std::exchange(Configuration::get(), before);

    for (const auto& name : Configuration::keyNames())
    {
        const auto dot = name.find('.');
        EXPECT_TRUE(std::regex_search(
            text, std::regex("\\[" + name.substr(0, dot) + "\\](\n[^\\[].*|\n)*\n" + name.substr(dot + 1) + " = ")))
            << name;
    }
    EXPECT_THAT(loaded.gpioLines, SizeIs(Platform::unitLines.size()));
    for (const auto& [line, use] : Platform::unitLines)
        EXPECT_THAT(loaded.gpioLines, Contains(Key(line))) << use;
    for (int page = 0; page < Pubhead::NUM_OF_PAGES; ++page)
        EXPECT_EQ(loaded.programs.contains(page), EngineApi::pageScheduleConfig(page) != nullptr)
            << Pubhead::pageName(page);
    EXPECT_THAT(loaded.backgroundPrograms, SizeIs(Platform::backgroundPages.size()));
}
