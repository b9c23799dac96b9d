#include "check/Files.h"

#include "EngineApi/Catalogue.h"
#include "check/Errors.h"
#include "dsp/akm/Images.h"
#include "platform/config/Configuration.h"
#include "platform/config/Resources.h"
#include "platform/settings/SetupValues.h"
#include "platform/sound/Sound.h"

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace Check
{

namespace
{

namespace fs = std::filesystem;
using Platform::AppConfig;
using Platform::Configuration;

/** For the user that this process acts for. */
bool may(const fs::path& path, int mode)
{
    return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

Row readFolder(const char* what, const char* key, const juce::String& configured)
{
    const auto path = configured.toStdString();
    if (!fs::is_directory(path))
        return { what, State::missing, path + ": there is no such folder",
                 std::string("install it, or let ") + key + " name the folder" };
    if (!may(path, R_OK | X_OK))
        return { what, State::missing, path + ": this user may not read it", "chmod o+rx " + path };
    return { what, State::ok, path, {} };
}

/** "" when everything in the folder can be written. */
std::string firstLocked(const fs::path& folder)
{
    std::error_code error;
    for (const auto& entry :
         fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied, error))
        if (!entry.is_symlink() && !may(entry.path(), entry.is_directory() ? R_OK | W_OK | X_OK : R_OK | W_OK))
            return entry.path();
    return {};
}

/** The engine makes a folder that it lacks, where it may. */
Row writtenFolder(const char* what, const juce::String& configured)
{
    const auto path = configured.toStdString();
    const std::string handOver = "chown -R headunit " + path + " (the user that the engine runs as)";
    auto nearest = fs::path(path).parent_path(); // without the '/' at its end
    if (!fs::exists(nearest))
    {
        while (nearest.has_relative_path() && !fs::exists(nearest))
            nearest = nearest.parent_path();
        return may(nearest, W_OK | X_OK)
                   ? Row { what, State::ok, path + " will be made", {} }
                   : Row { what, State::missing, path + ": it is not there, and this user cannot make it",
                           "mkdir -p " + path + "; " + handOver };
    }
    if (!may(path, R_OK | W_OK | X_OK))
        return { what, State::missing, path + ": this user may not write there", handOver };
    if (const auto locked = firstLocked(path); !locked.empty())
        return { what, State::missing, locked + ": this user may not write it", handOver };
    return { what, State::ok, path, {} };
}

Row mountPoints()
{
    const auto path = Configuration::get().mediaRoot.toStdString();
    if (!fs::is_directory(path))
        return { "mount points", State::note, path + ": there is no such folder",
                 "make it, or no medium is found (unit.media_root)" };
    std::string found;
    for (int index = 0; index < 8; ++index)
        if (Platform::ExternalDeviceState::isHardDiskPresent(index))
            found += ", Hard Disk" + (index == 0 ? std::string() : std::to_string(index + 1));
    if (Platform::ExternalDeviceState::isSDConnect())
        found += ", SD";
    return { "mount points", State::ok, path + (found.empty() ? ": no medium" : ": " + found.substr(2)), {} };
}

Row resourcePack(const char* name)
{
    const auto path = AppConfig::getResourcePath() + name;
    const bool isWhole = Platform::CVXResPathManager::getInstance()->addResPath(path, {});
    return { "resource pack", isWhole ? State::ok : State::missing,
             isWhole ? path.toStdString() : Errors::take(path.toStdString()),
             isWhole ? "" : "install the resources of this version of the engine (unit.resource_path)" };
}

Row factorySettings()
{
    const auto count = Platform::readFactoryValues().size();
    const auto problem = Errors::take({});
    if (problem.empty())
        return { "factory settings", State::ok, std::to_string(count) + " settings", {} };
    return { "factory settings", count == 0 ? State::missing : State::note, problem,
             "correct factory-settings.toml, or install that of this version of the engine" };
}

Row fonts()
{
    const auto folder = AppConfig::fontFolder();
    const int count = folder.getNumberOfChildFiles(juce::File::findFiles, AppConfig::fontFiles);
    const auto path = folder.getFullPathName().toStdString();
    if (count > 0)
        return { "fonts", State::ok, std::to_string(count) + " in " + path, {} };
    return { "fonts", State::note, "none in " + path, "install them, or texts look as the system's fonts do" };
}

Row versionFile()
{
    const juce::File file(AppConfig::getApplicationPath() + "Version.txt");
    const auto text = file.loadFileAsString().upToFirstOccurrenceOf("\n", false, false).trim();
    if (text.isNotEmpty())
        return { "version file", State::ok, text.toStdString(), {} };
    return { "version file", State::note, file.getFullPathName().toStdString() + " holds no version",
             "write the unit's version into it, or displays on the boat's network show none" };
}

Row alertSound()
{
    const auto path = AppConfig::getProfilePath() + "alert_49.wav";
    const auto result = Platform::checkSoundFile(path);
    if (result.wasOk())
        return { "alert sound", State::ok, path.toStdString(), {} };
    return { "alert sound", State::missing, (path + ": " + result.getErrorMessage()).toStdString(),
             "install it (unit.profile_path), or the alert for a low battery is silent" };
}

Row dspImage(const Dsp::Image& image)
{
    const std::string what = std::string("DSP image ") + image.file;
    const auto folder = Dsp::imageFolder().getFullPathName().toStdString();
    juce::String problem;
    const auto content = Dsp::readImage(image, problem);
    if (problem.isNotEmpty())
        return { what, State::missing, problem.toStdString(), "put the image of the DSP's maker into " + folder };
    if (!Dsp::isStandIn(content))
        return { what, State::ok, std::to_string(image.size) + " bytes", {} };
    if (Configuration::isSimulated(Configuration::get().spi2))
        return { what, State::ok, "a stand-in, which is enough for a simulated DSP", {} };
    return { what, State::missing, "a stand-in of the build: the DSP is not started with it",
             "put the image of the DSP's maker into " + folder };
}

Row program(const std::string& what, const juce::String& configured)
{
    const auto path = configured.toStdString();
    if (!fs::exists(path))
        return { what, State::missing, path + ": there is no such file", "install the program, or correct its path" };
    if (!fs::is_regular_file(path) || !may(path, X_OK))
        return { what, State::missing, path + " cannot be executed", "chmod +x " + path };
    return { what, State::ok, path, {} };
}

/** Of the pages that the unit has. */
Row pagesWithoutProgram()
{
    std::string names;
    for (int page = 0; page < Pubhead::NUM_OF_PAGES; ++page)
        if (EngineApi::pageScheduleConfig(page) != nullptr && AppConfig::getAppPath(page).isEmpty())
            names += std::string(names.empty() ? "" : " ") + Pubhead::pageName(page);
    if (names.empty())
        return { "pages without a program", State::ok, "none", {} };
    return { "pages without a program", State::note, names, "name their programs in [programs]: they cannot be shown" };
}

/** The head of a public key as files in the PEM form have it. */
bool isPublicKey(const juce::File& file)
{
    return file.loadFileAsString().contains("-----BEGIN PUBLIC KEY-----");
}

} // namespace

Rows folders()
{
    const auto& configuration = Configuration::get();
    return { writtenFolder("settings", configuration.systemPath),
             writtenFolder("driver settings", configuration.registryPath),
             readFolder("resources", "unit.resource_path", configuration.resourcePath),
             readFolder("application", "unit.application_path", configuration.applicationPath),
             readFolder("profile", "unit.profile_path", configuration.profilePath),
             mountPoints() };
}

Rows resources()
{
    Rows rows;
    for (const auto* pack : Platform::resourcePacks)
        rows.push_back(resourcePack(pack));
    Platform::ResourceAutoDelete();
    for (const auto row : { factorySettings, fonts, versionFile, alertSound })
        rows.push_back(row());
    return rows;
}

Rows dspImages()
{
    Rows rows;
    for (const auto& image : Dsp::images)
        rows.push_back(dspImage(image));
    return rows;
}

Rows programs()
{
    const auto& configuration = Configuration::get();
    Rows rows;
    for (const auto& [page, path] : configuration.programs)
        rows.push_back(program(Pubhead::pageName(page), path));
    for (const auto& [page, path] : configuration.backgroundPrograms)
        rows.push_back(program(Pubhead::pageName(page) + std::string(" in the background"), path));
    rows.push_back(pagesWithoutProgram());
    return rows;
}

Rows updateKeys()
{
    const auto& path = Configuration::get().updateKeys;
    if (path.isEmpty())
        return { { "update keys", State::note, "none: every update program is started",
                   "let update.keys name a folder with the public keys of those who may update the unit" } };
    const auto files = juce::File(path).findChildFiles(juce::File::findFiles, false, "*.pem");
    Rows rows;
    for (const auto& file : files)
        if (!isPublicKey(file))
            rows.push_back({ "update keys", State::missing, file.getFullPathName().toStdString() + ": no public key",
                             "put a public key in the PEM form there, or remove the file" });
    if (files.isEmpty())
        return { { "update keys", State::missing, "no *.pem in " + path.toStdString() + ": no update is started",
                   "put the public keys of those who may update the unit there" } };
    if (rows.empty())
        rows.push_back({ "update keys", State::ok, std::to_string(files.size()) + " in " + path.toStdString(), {} });
    return rows;
}

} // namespace Check
