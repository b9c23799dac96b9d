#include "platform/base/Logger.h"

#include <cstdlib>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <regex>
#include <thread>

using Platform::Logger;

namespace
{

constexpr auto libraryPath = HEADUNIT_BUILD_DIR "/lib/libVX_Logcat.so";

/** The library with its file in a scratch folder; it is set up once a process. */
class LogLibrary
{
public:
    explicit LogLibrary(const char* console = "off", const char* path = nullptr)
    {
        setenv("HEADUNIT_LOG_FILE", path == nullptr ? file.getFullPathName().toRawUTF8() : path, 1);
        setenv("HEADUNIT_LOG_CONSOLE", console, 1);
        handle = dlopen(libraryPath, RTLD_NOW | RTLD_LOCAL);
    }

    ~LogLibrary() { file.getParentDirectory().deleteRecursively(); }

    template <typename Function>
    Function entry(const char* name) const
    {
        return reinterpret_cast<Function>(dlsym(handle, name));
    }

    bool log(const char* level, const char* format, ...) const __attribute__((format(printf, 3, 4)))
    {
        va_list arguments;
        va_start(arguments, format);
        const bool result = entry<Logger::Entry>(level)("layer/Source", 42, "Tag", format, arguments);
        va_end(arguments);
        return result;
    }

    juce::StringArray lines() const { return juce::StringArray::fromLines(file.loadFileAsString().trimEnd()); }

    const juce::File file = juce::File::getSpecialLocation(juce::File::tempDirectory)
                                .getChildFile("headunit-log-" + juce::Uuid().toString())
                                .getChildFile("unit.log");
    void* handle = nullptr;
};

LogLibrary& library()
{
    static LogLibrary instance;
    return instance;
}

} // namespace

TEST(LogLibraryTest, ALineTellsTimeLevelTagAndPlaceAndStaysALine)
{
    const auto& log = library();
    ASSERT_NE(log.handle, nullptr) << dlerror();
    for (const auto* level : { "VX_LogDebug", "VX_LogInfo", "VX_LogWarn", "VX_LogError" })
        ASSERT_TRUE(log.log(level, "%s = %d%%\r\nsecond\n", "volume", 20)) << level;
    const auto lines = log.lines();
    const char* levels[] = { "debug", "info", "warning", "error" };
    ASSERT_GE(lines.size(), 4);
    for (int each = 0; each < 4; ++each)
        EXPECT_THAT(lines[lines.size() - 4 + each].toStdString(),
                    testing::MatchesRegex(std::string("[0-9-]{10} [0-9:.]{12}  ") + levels[each] +
                                          " +Tag +layer/Source:42  volume = 20%  second"));
    EXPECT_FALSE(log.log("VX_LogError", "%ls", L"\xD800")) << "a text that cannot be formed is reported";
}

TEST(LogLibraryTest, LinesOfAnyLengthFromManyThreadsStayWholeOverARotation)
{
    const auto& log = library();
    constexpr int threads = 4, linesEach = 300, length = 1500; // 1.8 MB: the file is changed once
    std::vector<std::thread> writers;
    for (int thread = 0; thread < threads; ++thread)
        writers.emplace_back(
            [&, thread]
            {
                const std::string text(length, static_cast<char>('a' + thread));
                for (int line = 0; line < linesEach; ++line)
                    log.log("VX_LogInfo", "<%s>", text.c_str());
            });
    for (auto& writer : writers)
        writer.join();

    const auto previous = log.file.getSiblingFile("unit.1.log");
    EXPECT_LE(previous.getSize(), 1024 * 1024);
    int whole = 0;
    for (const auto& file : { previous, log.file })
        for (const auto& line : juce::StringArray::fromLines(file.loadFileAsString()))
        {
            const auto text = line.fromFirstOccurrenceOf("<", false, false);
            whole += text.length() == length + 1 && text.containsOnly(text.substring(0, 1) + ">");
        }
    EXPECT_EQ(whole, threads * linesEach);
}

TEST(LogLibraryTest, ALogIsSavedAndReadBack)
{
    const auto& log = library();
    const auto save = log.entry<Logger::StoreEntry>("VX_SaveLog");
    const auto read = log.entry<Logger::StoreEntry>("VX_ReadLog");
    log.log("VX_LogError", "to be kept");
    const auto copy = log.file.getSiblingFile("copy.log");
    copy.replaceWithText("older and longer");
    ASSERT_TRUE(save(copy.getFullPathName().toRawUTF8()));
    EXPECT_EQ(copy.loadFileAsString(), log.file.loadFileAsString());
    EXPECT_FALSE(save(nullptr));
    EXPECT_FALSE(save("/no/such/folder/copy.log"));

    copy.replaceWithText("what was kept\n", false, false, "\n");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(read(copy.getFullPathName().toRawUTF8()));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "what was kept\n");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(read(""));
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr("to be kept"));
    EXPECT_FALSE(read("/no/such/file"));
}

/** Each of these needs the library as a new process finds it. */
TEST(LogLibraryDeathTest, TheConsoleFollowsTheEnvironmentAndAMissingFileIsSaidOnce)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run = [](const char* console)
    {
        const LogLibrary log(console, "/dev/null/unit.log");
        log.log("VX_LogDebug", "fine point");
        log.log("VX_LogError", "trouble");
        _exit(0);
    };
    const auto zero = testing::ExitedWithCode(0);
    EXPECT_EXIT(run("error"), zero, "no log file[^\n]*\n[^\n]*trouble\n$");
    EXPECT_EXIT(run("debug"), zero, "no log file[^\n]*\n[^\n]*fine point\n[^\n]*trouble\n$");
    EXPECT_EXIT(run("off"), zero, "no log file[^\n]*\n$");
    EXPECT_EXIT(run("loud"), zero, "HEADUNIT_LOG_CONSOLE is 'loud'.*trouble\n$");
}

/** Without the library the logger answers false; with it, a text passes as it stands, whatever it contains. */
TEST(LoggerTest, ATextIsNeverAFormatAndALevelCanBeRedirected)
{
    static std::string last;
    const Logger::Entry record = [](const char*, int, const char*, const char* format, va_list arguments)
    {
        std::array<char, 100> text {};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        last = text.data();
        return true;
    };
    static constexpr Platform::Log logger { "f", "t" };
    Logger::getInstance()->redirect(nullptr, record, nullptr, nullptr);
    EXPECT_TRUE(logger().info(juce::String("100%s %n")));
    EXPECT_EQ(last, "100%s %n");
    EXPECT_TRUE(logger().info("%d of %s", 3, "four"));
    EXPECT_EQ(last, "3 of four");
    EXPECT_FALSE(logger().error("nobody listens"));
    Logger::getInstance()->redirect(nullptr, nullptr, nullptr, nullptr);
}
