#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Bench
{

/** Lets the group of the folder read and write the file, and no other (0660). Empty on success, else what failed. */
std::string shareWith(const std::filesystem::path& folder, const std::string& file);

/** Folders, files and links that the bench makes outside of a folder of its own, and removes at the end. */
class MadeFiles
{
public:
    ~MadeFiles() { removeAll(); }

    // Empty on success, else what failed.

    /** A folder and those above it, where they are missing, for the group of another folder or else of the one above. */
    std::string folder(const std::filesystem::path& path, const std::filesystem::path& like = {});
    /** An empty file that the group of its folder may write, in place of an old one. */
    std::string file(const std::filesystem::path& path);
    /** In place of an old link. */
    std::string link(const std::filesystem::path& target, const std::filesystem::path& path);

    /** What may be made there later. */
    void note(const std::filesystem::path& path) { made.push_back(path); }

    /** Folders only when nothing is left in them. */
    void removeAll();

private:
    std::vector<std::filesystem::path> made; // in this order
};

} // namespace Bench
