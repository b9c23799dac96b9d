// What is installed beside the command speaks of the same commands and names.
#include "FakeEngine.h"
#include "bench/text/Names.h"
#include "bench/unit/Child.h"
#include "ctl/Reports.h"
#include "ctl/Why.h"

#include <fstream>
#include <gmock/gmock.h>

namespace
{

using testing::HasSubstr;

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator(file), {} };
}

const std::string completionFile = HEADUNIT_SOURCE_DIR "/packaging/headunit-ctl.bash";

/** What bash offers at the end of this line, a word each, sorted. */
std::string completionsOf(const std::string& line, const std::string& address)
{
    const juce::TemporaryFile output;
    const auto path = output.getFile().getFullPathName().toStdString();
    // Bash cuts the line at its word breaks, the colons and equals signs of an address among them.
    const std::string script = "source " + completionFile + "\n" + "COMP_WORDS=($(sed 's/[:=]/ & /g' <<<'" + line +
                               " '))\n" + (line.ends_with(' ') ? "COMP_WORDS+=('')\n" : "") +
                               "COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_headunit_ctl\n"
                               "printf '%s\\n' \"${COMPREPLY[@]}\" | sort | tr '\\n' ' '\n";
    Bench::Child child;
    EXPECT_EQ(child.start({ "/bin/bash",
                            { "-c", script },
                            { { "PATH", HEADUNIT_BUILD_DIR "/bin:/usr/bin:/bin" }, { "HEADUNIT_BUS", address } },
                            path,
                            {} }),
              "");
    EXPECT_TRUE(child.waitForEnd(std::chrono::minutes(1)));
    return contentOf(path);
}

} // namespace

TEST(Completion, OffersWhatTheEngineHas)
{
    const TestBus bus;
    const auto address = bus.address().toStdString();
    FakeEngine engine(address);
    engine.answer("Pages", { { { "page", "mbFM" }, { "show", 1 } }, { { "show", 2 }, { "page", "mbNew" } } });
    engine.answer("Programs", { { { "program", "AppNew" } } });
    engine.answer("Settings", { { { "index", 1 }, { "name", "eq-preset" }, { "value", "x" } } });
    const std::pair<std::string, const char*> cases[] = {
        { "headunit-ctl why page ", "fm mbFM mbNew new " },
        { "headunit-ctl --json why source mb", "mbFM mbNew " },
        { "headunit-ctl why not running A", "AppNew " },
        { "headunit-ctl settings e", "eq-preset " },
        { "headunit-ctl qu", "queues " },
        { "headunit-ctl why ", "not page request silent source " },
        { "headunit-ctl log d", "debug default " },
        { "headunit-ctl counters --", "--all --bus --config --help --json --version " },
        { "headunit-ctl state ", " " },
    };
    for (const auto& [line, words] : cases)
        EXPECT_EQ(completionsOf(line, address), words) << line;
    EXPECT_EQ(completionsOf("headunit-ctl --bus " + address + " why page mbN", "unix:path=/nowhere"), "mbNew ")
        << "of the engine that the line names";
}

TEST(Completion, KnowsTheNamesOfEveryUnitWithoutAnEngine)
{
    const auto pages = completionsOf("headunit-ctl why page mb", "unix:path=/nowhere");
    for (const auto& info : Bench::allPages())
        EXPECT_THAT(pages, HasSubstr(std::string(Pubhead::pageName(info.page)) + " "));
    EXPECT_EQ(std::ranges::count(pages, ' '), static_cast<std::ptrdiff_t>(Bench::allPages().size()));
    const auto programs = completionsOf("headunit-ctl why not running App", "unix:path=/nowhere");
    for (const auto appType : Bench::allApps())
        EXPECT_THAT(programs, HasSubstr(std::string(Pubhead::appTypeName(appType)) + " "));
    EXPECT_EQ(std::ranges::count(programs, ' '), static_cast<std::ptrdiff_t>(Bench::allApps().size()));
}

/** A command that is added is completed and in the manual, too. */
TEST(Packaging, NamesEveryCommand)
{
    const auto manual = contentOf(HEADUNIT_SOURCE_DIR "/packaging/headunit-ctl.1");
    const auto commands = completionsOf("headunit-ctl ", "unix:path=/nowhere");
    for (const auto& report : Ctl::reports())
    {
        EXPECT_THAT(" " + commands, HasSubstr(std::string(" ") + report.name + " "));
        EXPECT_THAT(manual, testing::ContainsRegex(std::string("\n\\.BR? ") + report.name + "[ \n]"));
    }
    for (const auto& question : Ctl::questions())
        EXPECT_THAT(manual, HasSubstr(std::string("why ") + question.words)) << question.words;
}
