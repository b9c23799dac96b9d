#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"
#include "platform/record/Recorder.h"

namespace Platform
{

namespace
{

constexpr Log logger { "platform/AppConfig", "CameraControl" };

juce::String programOf(const std::map<int, juce::String>& programs, int page)
{
    const auto found = programs.find(page);
    return found == programs.end() ? juce::String() : found->second;
}

juce::String fileNameOf(const juce::String& path)
{
    return path.fromLastOccurrenceOf("/", false, false);
}

bool isMountPointPresent(const juce::String& name)
{
    return recorded(
        Step::storage, [&] { return juce::File(Configuration::get().mediaRoot).getChildFile(name).isDirectory(); },
        name);
}

constexpr int maxHardDisks = 8;

} // namespace

juce::String AppConfig::getSystemFilePath()
{
    return Configuration::get().systemPath;
}

juce::String AppConfig::getResourcePath()
{
    return Configuration::get().resourcePath;
}

juce::String AppConfig::getApplicationPath()
{
    return Configuration::get().applicationPath;
}

juce::String AppConfig::getProfilePath()
{
    return Configuration::get().profilePath;
}

juce::String AppConfig::getAppPath(int page)
{
    return programOf(Configuration::get().programs, page);
}

juce::String AppConfig::getAppName(int page)
{
    return fileNameOf(getAppPath(page));
}

juce::String AppConfig::getBackAppPath(int page)
{
    return programOf(Configuration::get().backgroundPrograms, page);
}

juce::String AppConfig::getBackAppName(int page)
{
    return fileNameOf(getBackAppPath(page));
}

juce::String CorvaneConfig::getMcuUartName()
{
    return Configuration::get().mcuPort;
}

int CorvaneConfig::getMcuUartBandRate()
{
    return Configuration::get().mcuBaud;
}

namespace
{

enum class Override { none, off, on };
std::atomic<Override> systemDebug { Override::none };

} // namespace

bool CorvaneConfig::isSystemDebug()
{
    const auto instead = systemDebug.load(std::memory_order_relaxed);
    return instead == Override::none ? Configuration::get().systemDebug : instead == Override::on;
}

void CorvaneConfig::overrideSystemDebug(std::optional<bool> on)
{
    systemDebug = !on ? Override::none : *on ? Override::on : Override::off;
}

bool CorvaneConfig::isUseSDAsUsb()
{
    return Configuration::get().sdAsUsb;
}

juce::String BSPInfo::getOSVersion()
{
    return Configuration::get().osVersion;
}

bool ExternalDeviceState::isSDConnect()
{
    return isMountPointPresent("SD");
}

bool ExternalDeviceState::isHardDiskPresent(int index)
{
    if (index < 0 || index >= maxHardDisks)
        return false;
    return isMountPointPresent(index == 0 ? juce::String("Hard Disk") : "Hard Disk" + juce::String(index + 1));
}

bool CameraControl::isSystemControl() const
{
    return recorded(Step::cameraHolds, [] { return juce::File(Configuration::get().cameraHoldFile).exists(); });
}

void CameraControl::retrieveControl()
{
    const juce::File holdFile(Configuration::get().cameraHoldFile);
    if (!holdFile.deleteFile())
        logger().error("%s cannot be removed", holdFile.getFullPathName().toRawUTF8());
}

int UIHelper::getScreenWidth()
{
    return Configuration::get().screenWidth;
}

int UIHelper::getScreenHeight()
{
    return Configuration::get().screenHeight;
}

} // namespace Platform
