#pragma once

#include "platform/config/Configuration.h"
#include "platform/settings/SetupStore.h"
#include "platform/settings/SysInfo.h"

#include <cstdlib>
#include <sys/mman.h>

/**
    A unit of its own for the tests of one process: the paths of the configuration lie below a new temporary folder, and
    the system-information table is no other's. All of it goes with the object.
*/
class ScratchUnit
{
public:
    ScratchUnit()
    {
        auto& configuration = Platform::Configuration::get();
        configuration.systemPath = makeFolder("System");
        configuration.resourcePath = makeFolder("resources");
        configuration.applicationPath = makeFolder("application");
        configuration.profilePath = makeFolder("profile");
        configuration.registryPath = makeFolder("registry");
        configuration.mediaRoot = makeFolder("media");
        configuration.cameraHoldFile = folder.getChildFile("camera").getFullPathName();
        setenv("HEADUNIT_SYSINFO", sysInfoName.c_str(), 1);
    }

    ~ScratchUnit()
    {
        Platform::VX_ReleaseSetupInfo();
        Platform::VX_ReleaseSysInfo();
        shm_unlink(sysInfoName.c_str());
        folder.deleteRecursively();
    }

    /** A store without any setting, whose factory values are the lines of `factoryValues`. */
    static void emptySettings(const juce::String& factoryValues = {})
    {
        Platform::VX_ReleaseSetupInfo();
        const auto& configuration = Platform::Configuration::get();
        juce::File(configuration.systemPath).getChildFile("settings").deleteRecursively();
        juce::File(configuration.resourcePath).getChildFile("factory-settings.toml").replaceWithText(factoryValues);
    }

    JUCE_DECLARE_NON_COPYABLE(ScratchUnit)

private:
    juce::String makeFolder(const juce::String& name) const
    {
        const auto made = folder.getChildFile(name);
        made.createDirectory();
        return made.getFullPathName() + "/";
    }

    const juce::File folder = juce::File::getSpecialLocation(juce::File::tempDirectory)
                                  .getChildFile("headunit-test-" + juce::Uuid().toString());
    const std::string sysInfoName = "/" + folder.getFileName().toStdString();
};
