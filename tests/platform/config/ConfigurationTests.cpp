#include "platform/base/Pubhead.h"
#include "platform/config/Configuration.h"

#include <gmock/gmock.h>

using namespace Platform;
using testing::HasSubstr;

namespace
{

/** Leaves the process-wide configuration as it was. */
class ConfigurationTest : public testing::Test
{
protected:
    ~ConfigurationTest() override { Configuration::get() = before; }

    std::string load(const juce::String& content)
    {
        file.getFile().replaceWithText(content);
        return Configuration::load(file.getFile().getFullPathName());
    }

    juce::String folder() const { return file.getFile().getParentDirectory().getFullPathName() + "/"; }

    const Configuration before = Configuration::get();
    const juce::TemporaryFile file { ".toml" };
};

} // namespace

TEST_F(ConfigurationTest, APathIsTakenFromTheFolderOfTheFileAndASocketKeepsItsPrefix)
{
    ASSERT_EQ(load("unit.system_path = 'data/System'\n"
                   "unit.resource_path = '/opt/resources/'\n"
                   "unit.screen = [1024, 600]\n"
                   "unit.os_version = 'TRV_A6_V1.2_20190102'\n"
                   "unit.log_library = 'lib/libVX_Logcat.so'\n"
                   "mcu.port = '../tty'\n"
                   "bus.spi2 = 'socket:dsp'\n"
                   "bus.gpio = 'chip'\n"
                   "[gpio_lines]\n32771 = 3\n"
                   "[programs]\nmbFM = 'bin/radio'\n"
                   "[background_programs]\nmbBTAudio = '/opt/phone'\n"),
              "");
    const auto& loaded = Configuration::get();
    EXPECT_EQ(AppConfig::getSystemFilePath(), folder() + "data/System/");
    EXPECT_EQ(AppConfig::getResourcePath(), "/opt/resources/");
    EXPECT_EQ(UIHelper::getScreenHeight(), 600);
    EXPECT_EQ(BSPInfo::getOSVersion(), "TRV_A6_V1.2_20190102");
    EXPECT_EQ(loaded.logLibrary, folder() + "lib/libVX_Logcat.so");
    EXPECT_EQ(CorvaneConfig::getMcuUartName(),
              file.getFile().getParentDirectory().getSiblingFile("tty").getFullPathName());
    EXPECT_EQ(loaded.spi2, "socket:" + folder() + "dsp");
    EXPECT_EQ(loaded.gpio, folder() + "chip");
    EXPECT_EQ(loaded.gpioLines, (std::map<int, int> { { 32771, 3 } }));
    EXPECT_EQ(AppConfig::getAppPath(Pubhead::mbFM), folder() + "bin/radio");
    EXPECT_EQ(AppConfig::getAppName(Pubhead::mbFM), "radio");
    EXPECT_EQ(AppConfig::getBackAppName(Pubhead::mbBTAudio), "phone");
    EXPECT_EQ(AppConfig::getBackAppPath(Pubhead::mbFM), "");
}

TEST_F(ConfigurationTest, AProblemIsNamedInOneLineAndChangesNothing)
{
    struct Case
    {
        const char* content;
        const char* wanted; ///< what follows the path of the file
    };
    constexpr Case cases[] = {
        { "[unit]\n\nsytem_path = '/x'\n", ":3: unit.sytem_path: unknown key" },
        { "[unti]\n", ":1: unti: unknown key" },
        { "system_path = '/x'\n", ":1: system_path: unknown key" },
        { "unit = 1\n", ":1: unit: a table is wanted" },
        { "[unit]\nsystem_path = 7\n", ":2: unit.system_path: a path is wanted" },
        { "[unit]\nsystem_path = ''\n", ":2: unit.system_path: a path is wanted" },
        { "[unit]\nsystem_debug = 1\n", ":2: unit.system_debug: true or false is wanted" },
        { "[unit]\nscreen = [800]\n", ":2: unit.screen: [width, height]" },
        { "[unit]\nscreen = [800, 0]\n", ":2: unit.screen: [width, height]" },
        { "[unit]\ndisplay = 'yes'\n", ":2: unit.display: \"auto\" or \"none\" is wanted" },
        { "[mcu]\nbaud = '115200'\n", ":2: mcu.baud: a whole number from 1 to" },
        { "[mcu]\nbaud = 4294967297\n", ":2: mcu.baud: a whole number from 1 to" },
        { "[bus]\ni2c1 = 'socket:'\n", ":2: bus.i2c1: a path is wanted" },
        { "[gpio_lines]\nx = 1\n", ":2: gpio_lines.x: the name of a line is a whole number" },
        { "[gpio_lines]\n3 = -1\n", ":2: gpio_lines.3: a whole number from 0 to" },
        { "[programs]\nmbFm = '/x'\n", ":2: programs.mbFm: there is no page of this name" },
        { "[programs]\nNUM_OF_PAGES = '/x'\n", ":2: programs.NUM_OF_PAGES: there is no page" },
        { "[background_programs]\nmbFM = '/x'\n",
          ":2: background_programs.mbFM: only these pages keep a program in the background: mbMainMenu" },
        { "[unit]\nscreen = [1, 2\ndisplay = 'none'\n", ":3: " },
        { "[mcu]\nbaud = 1\nbaud = 2\n", ":3: " },
    };
    Configuration::get().mcuBaud = 4711;
    for (const auto& [content, wanted] : cases)
    {
        const auto problem = load(content);
        EXPECT_THAT(problem, HasSubstr(file.getFile().getFullPathName().toStdString() + wanted)) << content;
        EXPECT_EQ(problem.find('\n'), std::string::npos) << content;
    }
    EXPECT_THAT(Configuration::load(folder() + "absent.toml"), HasSubstr("absent.toml: there is no such file"));
    EXPECT_EQ(Configuration::get().mcuBaud, 4711);
}

TEST_F(ConfigurationTest, TheSampleStatesTheDefaults)
{
    ASSERT_EQ(Configuration::load(HEADUNIT_SOURCE_DIR "/packaging/engine.toml"), "");
    const auto& loaded = Configuration::get();
    const Configuration defaults;
    const auto texts = [](const Configuration& each)
    {
        return juce::StringArray { each.systemPath,   each.resourcePath, each.applicationPath, each.profilePath,
                                   each.registryPath, each.mediaRoot,    each.display,         each.cameraHoldFile,
                                   each.logLibrary,   each.mcuPort,      each.wiredRemotePort, each.spi2,
                                   each.i2c1,         each.gpio,         each.updateKeys }
            .joinIntoString("\n");
    };
    EXPECT_EQ(texts(loaded), texts(defaults));
    EXPECT_EQ(std::tie(loaded.systemDebug, loaded.sdAsUsb, loaded.screenWidth, loaded.screenHeight, loaded.mcuBaud),
              std::tie(defaults.systemDebug, defaults.sdAsUsb, defaults.screenWidth, defaults.screenHeight,
                       defaults.mcuBaud));
    // Without a default; the services that are installed with the engine have these.
    EXPECT_EQ(loaded.ipcAddress, "unix:path=/run/headunit/bus");
    EXPECT_EQ(loaded.launchSocket + loaded.launchUser, "/run/headunit/launchheadunit-program");
    EXPECT_EQ(loaded.updateSocket, "/run/headunit/update");
    EXPECT_TRUE(loaded.programs.empty() && loaded.gpioLines.empty());
    EXPECT_TRUE(loaded.osVersion.isNotEmpty());
}

/** The camera owns the screen while the boot stage's file is there, and no longer once this process has taken it. */
TEST_F(ConfigurationTest, TheCameraHoldFileAndTheMountPointsAreLookedAtEachTime)
{
    const juce::File holdFile(Configuration::get().cameraHoldFile);
    const juce::File media(Configuration::get().mediaRoot);
    CameraControl camera;
    EXPECT_FALSE(camera.isSystemControl());
    holdFile.create();
    EXPECT_TRUE(camera.isSystemControl());
    camera.retrieveControl();
    EXPECT_FALSE(camera.isSystemControl());

    EXPECT_FALSE(ExternalDeviceState::isSDConnect());
    for (const auto* name : { "SD", "Hard Disk", "Hard Disk8" })
        media.getChildFile(name).createDirectory();
    EXPECT_TRUE(ExternalDeviceState::isSDConnect());
    for (const int index : { 0, 7 })
        EXPECT_TRUE(ExternalDeviceState::isHardDiskPresent(index)) << index;
    for (const int index : { -1, 1, 8 })
        EXPECT_FALSE(ExternalDeviceState::isHardDiskPresent(index)) << index;
}
