#include "bench/unit/ProgramFiles.h"

#include "bench/text/Names.h"
#include "bench/unit/Places.h"

#include <filesystem>
#include <fstream>

namespace Bench
{

namespace fs = std::filesystem;

namespace
{

constexpr auto executable = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                            fs::perms::others_read | fs::perms::others_exec;

std::string link(const std::string& target, const fs::path& file)
{
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    fs::remove(file, error);
    // The name that a program is started by tells it which one it is.
    fs::create_symlink(target, file, error);
    return error ? file.string() + ": " + error.message() : std::string();
}

fs::path lateFile(const fs::path& file)
{
    return file.parent_path() / "late" / file.filename();
}

} // namespace

std::string linkPrograms(const std::string& program, const std::string& folder)
{
    for (const auto appType : allApps())
        if (auto error = link(program, fs::path(folder) / Pubhead::appTypeName(appType)); !error.empty())
            return error;
    return {};
}

std::string programTables(const std::string& folder)
{
    std::string text;
    for (const bool background : { false, true })
    {
        text += background ? "\n[background_programs]\n" : "[programs]\n";
        for (const auto& info : allPages())
            if (!background || info.inBackground)
                text += std::string(Pubhead::pageName(info.page)) + " = " +
                        quoted(folder + "/" + Pubhead::appTypeName(info.appType)) + "\n";
    }
    return text;
}

void ProgramFiles::take(std::string standIn, std::map<int, std::string> files)
{
    fallback = std::move(standIn);
    paths = std::move(files);
}

std::string ProgramFiles::remove(int appType)
{
    if (!paths.contains(appType))
        return std::string("the engine's configuration names no ") + Pubhead::appTypeName(appType);
    const fs::path file = paths[appType];
    std::error_code isNoLink, isNotEmpty, error;
    const auto target = fs::read_symlink(file, isNoLink).string();
    if (!changed.contains(appType))
    {
        if (isNoLink && fs::exists(file, error))
            return file.string() + " is no link to the bench's program, it stays as it is";
        const auto before = isNoLink ? fallback : target;
        changed[appType] = { before, before };
    }
    fs::remove(lateFile(file), error);
    fs::remove(lateFile(file).parent_path(), isNotEmpty);
    fs::remove(file, error);
    note(appType, "is missing");
    return error ? file.string() + ": " + error.message() : std::string();
}

std::string ProgramFiles::replace(int appType, const std::string& program)
{
    if (auto error = remove(appType); !error.empty())
        return error;
    changed[appType].now = program;
    return install(appType, {});
}

std::map<int, std::string> ProgramFiles::faults() const
{
    const std::scoped_lock guard(lock);
    return startFaults;
}

void ProgramFiles::note(int appType, const std::string& fault)
{
    const std::scoped_lock guard(lock);
    if (fault.empty())
        startFaults.erase(appType);
    else
        startFaults[appType] = fault;
}

std::string ProgramFiles::install(int appType, std::chrono::milliseconds delay)
{
    if (auto error = remove(appType); !error.empty())
        return error;
    const fs::path file = paths[appType], late = lateFile(file);
    const bool isLate = delay.count() > 0;
    note(appType, isLate ? "starts " + std::to_string(delay.count()) + " ms late" : "");
    if (auto error = link(changed[appType].now, isLate ? late : file); !error.empty() || !isLate)
        return error;
    const auto seconds = std::to_string(std::chrono::duration<double>(delay).count());
    std::ofstream script(file);
    script << "#!/bin/sh\nsleep " << seconds << "\nexec '" << late.string() << "' \"$@\"\n";
    std::error_code error;
    if (!script.flush() || (fs::permissions(file, executable, error), error))
        return file.string() + ": cannot be written";
    return {};
}

void ProgramFiles::restore()
{
    while (!changed.empty())
    {
        const auto& [appType, target] = *changed.begin();
        replace(appType, target.before);
        changed.erase(changed.begin());
    }
}

bool ProgramFiles::canStart(int appType) const
{
    const auto found = paths.find(appType);
    std::error_code none;
    return found != paths.end() && fs::exists(found->second, none);
}

std::set<int> ProgramFiles::foreign() const
{
    std::set<int> others;
    std::error_code none;
    const auto standIn = fs::path(fallback).filename();
    for (const auto& [appType, path] : paths)
        // The stand-in may be installed in several places, under its own name.
        if (const auto file = fs::canonical(path, none); !none && file.filename() != standIn)
            others.insert(appType);
    return others;
}

} // namespace Bench
