#pragma once

#include <array>
#include <juce_core/juce_core.h>
#include <map>
#include <memory>

namespace Platform
{

/** Those of the engine, in the resource path. */
inline constexpr std::array resourcePacks { "CommonRes.spp", "MainRes.spp" };

/** The resource packs (zip archives), searched in the order in which they were added. Message thread. */
class CVXResPathManager
{
public:
    static CVXResPathManager* getInstance();
    /** False, and logged, when the pack is missing or damaged. `prefix` goes in front of the names in the pack. */
    bool addResPath(const juce::String& pack, const juce::String& prefix);
    /**
        A stream on the whole of a file, without regard to case and with '\' as '/'; it outlives its pack. Null when no
        pack has it, or when it is above 64 MiB or not what was packed, by its length and CRC-32 (logged the first
        time).
    */
    std::unique_ptr<juce::InputStream> open(const juce::String& name);
    /** Whether a pack has it, damaged or not. */
    bool contains(const juce::String& name) const;
    /** CRC-32 of a file's content as it was packed; 0 when no pack has it. */
    juce::uint32 checksumOf(const juce::String& name) const;
    void clear();

private:
    CVXResPathManager() = default;

    struct Entry
    {
        std::shared_ptr<juce::ZipFile> pack;
        int index = 0;
        juce::uint32 crc = 0;
        bool refused = false;
    };
    static std::unique_ptr<juce::InputStream> openWhole(const Entry& entry);

    std::map<juce::String, Entry> entries; ///< by full name in lower case
};

/** Closes the packs at the end of the process. */
void ResourceAutoDelete();

} // namespace Platform
