#include "platform/Resources.h"

#include "platform/Logger.h"

namespace Platform
{

namespace
{

constexpr juce::int64 maxFileSize = 64 * 1024 * 1024;

juce::String normalised(const juce::String& name)
{
    return name.replaceCharacter('\\', '/').trimCharactersAtStart("/").toLowerCase();
}

void logProblem(int line, const char* what, const juce::String& name)
{
    Logger::getInstance()->logError("platform/Resources", line, "CVXResPathManager", "%s: %s", what, name.toRawUTF8());
}

} // namespace

CVXResPathManager* CVXResPathManager::getInstance()
{
    static CVXResPathManager instance;
    return &instance;
}

bool CVXResPathManager::addResPath(const juce::String& pack, const juce::String& prefix)
{
    const juce::File file(pack);
    if (!file.existsAsFile())
    {
        logProblem(__LINE__, "the resource pack is missing", pack);
        return false;
    }
    const auto archive = std::make_shared<juce::ZipFile>(file);
    if (archive->getNumEntries() == 0)
    {
        logProblem(__LINE__, "the resource pack is empty or damaged", pack);
        return false;
    }
    for (int index = 0; index < archive->getNumEntries(); ++index)
        entries.try_emplace(normalised(prefix + archive->getEntry(index)->filename), Entry { archive, index });
    return true;
}

std::unique_ptr<juce::InputStream> CVXResPathManager::open(const juce::String& name)
{
    const auto found = entries.find(normalised(name));
    if (found == entries.end())
        return nullptr;

    const auto& [pack, index] = found->second;
    const auto size = pack->getEntry(index)->uncompressedSize;
    juce::MemoryBlock content;
    if (size <= maxFileSize)
        if (const std::unique_ptr<juce::InputStream> stream { pack->createStreamForEntry(index) })
            stream->readIntoMemoryBlock(content, static_cast<ssize_t>(size) + 1); // one more shows a wrong size
    if (static_cast<juce::int64>(content.getSize()) != size)
    {
        logProblem(__LINE__, "the file is damaged or too large", name);
        return nullptr;
    }
    return std::make_unique<juce::MemoryInputStream>(std::move(content));
}

void CVXResPathManager::clear()
{
    entries.clear();
}

void ResourceAutoDelete()
{
    CVXResPathManager::getInstance()->clear();
}

} // namespace Platform
