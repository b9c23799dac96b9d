#pragma once

#include <juce_core/juce_core.h>
#include <memory>

namespace Platform
{

/**
    An ini file held in memory: read once, changed in memory, written whole or not at all. Foreign sections, keys and
    comments stay as they are. A file that is missing, cut short or nonsense reads as far as it makes sense. Any thread.
*/
class CVXIniReadWrite
{
public:
    CVXIniReadWrite();
    ~CVXIniReadWrite();

    /** Binds to the file and reads it. */
    void setFileName(const juce::File& file);
    /** The default when the key is missing or no whole number of 32 bits. Blanks around = do not matter. */
    int getInt(const juce::String& section, const juce::String& key, int defaultValue) const;
    void setInt(const juce::String& section, const juce::String& key, int value);
    /**
        Writes the file by way of a second one that takes its place, durably. False, and logged, when that fails: the
        file is then what it was.
    */
    bool update();

private:
    struct Content;
    std::unique_ptr<Content> content;
    JUCE_DECLARE_NON_COPYABLE(CVXIniReadWrite)
};

} // namespace Platform
