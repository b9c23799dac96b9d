#include "platform/base/Logger.h"

#include "support/LogCapture.h"

#include <gmock/gmock.h>

using Platform::Logger;
using testing::ElementsAre;

namespace
{

constexpr Platform::Log here { "layer/Here", "Here" }, there { "layer/There", "There" };

std::vector<std::string> linesOfAll()
{
    for (const auto& log : { here, there })
    {
        log().debug("debug");
        log().info("info");
        log().error("error");
    }
    std::vector<std::string> lines;
    for (const auto& line : LogCapture::take())
        lines.push_back(line.tag + " " + line.text);
    return lines;
}

class LogLevels : public testing::Test
{
protected:
    ~LogLevels() override { logger.setLevel("default", ""); }

    LogCapture capture;
    Logger& logger = *Logger::getInstance();
};

} // namespace

TEST_F(LogLevels, AFilesOwnCountsMoreThanThatOfAll)
{
    using Change = Logger::LevelChange;
    EXPECT_EQ(linesOfAll().size(), 6u);
    EXPECT_EQ(logger.setLevel("error", ""), Change::done);
    EXPECT_THAT(linesOfAll(), ElementsAre("Here error", "There error"));
    EXPECT_EQ(logger.setLevel("info", "layer/There"), Change::done);
    EXPECT_THAT(linesOfAll(), ElementsAre("Here error", "There info", "There error"));
    EXPECT_EQ(logger.setLevel("loud", "layer/There"), Change::unknownLevel);
    EXPECT_THAT(linesOfAll(), ElementsAre("Here error", "There info", "There error")) << "no change";
    EXPECT_EQ(logger.setLevel("default", "layer/There"), Change::done);
    EXPECT_THAT(linesOfAll(), ElementsAre("Here error", "There error"));
    logger.setLevel("verbose", "layer/Here");
    EXPECT_THAT(linesOfAll(), ElementsAre("Here debug", "Here info", "Here error", "There error"));
    logger.setLevel("default", "");
    EXPECT_EQ(linesOfAll().size(), 6u) << "those of files too";
}

TEST_F(LogLevels, AreKeptForSoManyFiles)
{
    for (std::size_t i = 0; i < Logger::mostFiles; ++i)
        EXPECT_EQ(logger.setLevel("debug", "file" + std::to_string(i)), Logger::LevelChange::done);
    EXPECT_EQ(logger.setLevel("error", "layer/Here"), Logger::LevelChange::tooManyFiles);
    EXPECT_EQ(linesOfAll().size(), 6u);
    EXPECT_EQ(logger.setLevel("error", "file0"), Logger::LevelChange::done) << "it has one already";
    EXPECT_EQ(logger.setLevel("error", ""), Logger::LevelChange::done) << "that of all is none of them";
    EXPECT_EQ(linesOfAll().size(), 2u);
    logger.setLevel("default", "file1");
    EXPECT_EQ(logger.setLevel("debug", "layer/Here"), Logger::LevelChange::done);
}
