#pragma once

#include <juce_core/juce_core.h>
#include <memory>

namespace Platform
{

/** The resource packs, searched in the order in which they were added. Message thread. */
class CVXResPathManager
{
public:
    static CVXResPathManager* getInstance();
    /** False, and logged, when the pack is missing or damaged. `prefix` goes in front of the names in the pack. */
    bool addResPath(const juce::String& pack, const juce::String& prefix);
    /** A stream on a file of a pack, without regard to case and with '\' as '/'; null when no pack has it. */
    std::unique_ptr<juce::InputStream> open(const juce::String& name);
    void clear();
};

/** Closes the packs at the end of the process. */
void ResourceAutoDelete();

} // namespace Platform
