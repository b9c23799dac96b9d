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

/** The archive hands out names as they are, and a text that is no UTF-8 must not reach the string functions. */
bool isWellFormed(const juce::String& name)
{
    return juce::CharPointer_UTF8::isValidString(name.toRawUTF8(), static_cast<int>(name.getNumBytesAsUTF8()));
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
    {
        const auto name = archive->getEntry(index)->filename;
        if (isWellFormed(name))
            entries.try_emplace(normalised(prefix + name), Entry { archive, index });
        else
            logProblem(__LINE__, "the resource pack has a damaged name", pack);
    }
    return true;
}

std::unique_ptr<juce::InputStream> CVXResPathManager::open(const juce::String& name)
{
    const auto found = entries.find(normalised(name));
    if (found == entries.end())
        return nullptr;

    const auto& [pack, index] = found->second;
    const auto size = pack->getEntry(index)->uncompressedSize;
    if (size > maxFileSize)
    {
        logProblem(__LINE__, "the file is too large", name);
        return nullptr;
    }
    // One byte more than there should be: a content that goes on is as wrong as one that ends early.
    juce::MemoryBlock content(static_cast<std::size_t>(size) + 1);
    const std::unique_ptr<juce::InputStream> stream { pack->createStreamForEntry(index) };
    const int length = stream == nullptr ? 0 : stream->read(content.getData(), static_cast<int>(size) + 1);
    if (length != size)
    {
        logProblem(__LINE__, "the file is damaged", name);
        return nullptr;
    }
    content.setSize(static_cast<std::size_t>(size));
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
