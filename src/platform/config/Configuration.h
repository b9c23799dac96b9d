#pragma once

#include "platform/base/Pubhead.h"

#include <array>
#include <juce_core/juce_core.h>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Platform
{

/** The pages that keep a program in the background; it is started as soon as the unit runs. */
inline constexpr std::array backgroundPages { Pubhead::mbMainMenu, Pubhead::mbBTAudio, Pubhead::mbiPodAudio,
                                              Pubhead::mbSirius };

/** Every key of the engine's configuration file, with its default. Paths are absolute after loading. */
struct Configuration
{
    juce::String systemPath = "/var/lib/headunit/System/";
    juce::String resourcePath = "/usr/share/headunit/";
    juce::String applicationPath = "/usr/lib/headunit/";
    juce::String profilePath = "/usr/share/headunit/profile/";
    juce::String registryPath = "/var/lib/headunit/registry/";
    juce::String osVersion; ///< from /etc/os-release when the file does not say
    bool systemDebug = false;
    bool sdAsUsb = false;
    juce::String mediaRoot = "/media/";
    int screenWidth = 800;
    int screenHeight = 480;
    juce::String display = "auto"; ///< "auto" or "none"
    juce::String cameraHoldFile = "/run/headunit/camera";
    juce::String logLibrary = "libVX_Logcat.so";
    juce::String mcuPort = "/dev/ttyS1";
    int mcuBaud = 115200;
    juce::String wiredRemotePort = "/dev/ttyS4";
    juce::String spi2 = "/dev/spidev2.0";
    juce::String i2c1 = "/dev/i2c-1";
    juce::String gpio = "/dev/gpiochip0";
    std::map<int, int> gpioLines; ///< unit line -> chip line; a line that is not named is the same on both sides
    juce::String ipcAddress;      ///< D-Bus address; empty = the session bus
    /** Socket of the service manager that starts each source program in a service of its own; empty = as a child. */
    juce::String launchSocket;
    juce::String launchUser;   ///< whose process a program started there is; empty = as the service manager has it
    juce::String updateSocket; ///< the same for the update program
    juce::String updateKeys;   ///< folder of the public keys that may sign it; empty = it needs no signature
    std::map<int, juce::String> programs;           ///< page -> path of its program
    std::map<int, juce::String> backgroundPrograms; ///< page -> path of its background program

    /**
        Reads the file into the process-wide configuration; what it does not name has its default. On failure nothing
        changes and the answer is one line that names file, line and key ("engine.toml:12: mcu.baud: a whole number from
        1 to 4000000 is wanted"); empty on success. A relative path is taken from the folder of the file; a log library
        without '/' is searched as the system's loader does.
    */
    static std::string load(const juce::String& path);
    /** The same for what stands in a file of this path, which need not be there. */
    static std::string loadText(const juce::String& path, const juce::String& text);

    /** "unit.system_path" ...: every key that is not the number of a line or the name of a page. */
    static std::vector<std::string> keyNames();

    /** Whether a bus is no device of this machine: its text is `simulated` and the path of a socket. */
    static bool isSimulated(const juce::String& bus) { return bus.startsWith(simulated); }
    static constexpr const char* simulated = "socket:";
    /** The line of the chip that stands for a unit line. */
    int chipLine(int unitLine) const
    {
        const auto mapped = gpioLines.find(unitLine);
        return mapped == gpioLines.end() ? unitLine : mapped->second;
    }

    /** The process-wide configuration: written at start (and by tests) only, read from any thread. */
    static Configuration& get();
};

/** Where things are, and which program shows which page ("" = none). Folders end with '/'. */
struct AppConfig
{
    static juce::String getSystemFilePath();
    static juce::String getResourcePath();
    static juce::String getApplicationPath();
    static juce::String getProfilePath();
    static juce::String getAppPath(int page);
    static juce::String getAppName(int page);
    static juce::String getBackAppPath(int page);
    static juce::String getBackAppName(int page);
    /**
        Uses the fonts in `fonts/` of the resource path, so that text looks the same everywhere; without them, those of
        the system (logged). Message thread, before anything is drawn and before other threads run.
    */
    static void loadFont();
    static juce::File fontFolder();
    static constexpr const char* fontFiles = "*.ttf;*.otf";
};

struct CorvaneConfig
{
    static juce::String getMcuUartName();
    static int getMcuUartBandRate();
    static bool isSystemDebug();
    /** From now on in place of what is configured; nothing takes it back. Any thread. */
    static void overrideSystemDebug(std::optional<bool> on);
    static bool isUseSDAsUsb();
};

struct BSPInfo
{
    static juce::String getOSVersion();
};

struct ExternalDeviceState
{
    static bool isSDConnect();
    /** Whether the mount point "Hard Disk", "Hard Disk2" ... "Hard Disk8" exists; index 0 to 7. */
    static bool isHardDiskPresent(int index);
};

/** The rear-view camera that the boot stage may still have on the screen. */
struct CameraControl
{
    /** True while the camera owns the screen. */
    bool isSystemControl() const;
    /** Takes the screen for this process: removes the hold file of the boot stage, if it is still there. */
    void retrieveControl();
};

struct UIHelper
{
    static int getScreenWidth();
    static int getScreenHeight();
    /** Whether the engine draws on a display when there is one: `unit.display` is "auto", and DISPLAY names it. */
    static bool hasDisplay();
};

} // namespace Platform
