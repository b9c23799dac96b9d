#include "platform/config/Resources.h"

#include "platform/base/Logger.h"

#include <array>
#include <zlib.h>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/Resources", "CVXResPathManager" };

constexpr juce::int64 maxFileSize = 64 * 1024 * 1024;

/**
    The archive's directory, of which the framework keeps the checksums to itself: signatures, lengths, and where what
    stands.
*/
constexpr juce::uint32 endSignature = 0x06054b50;
constexpr juce::uint32 entrySignature = 0x02014b50;
constexpr std::size_t endLength = 22, longestComment = 65535, entryLength = 46;
constexpr std::size_t directorySizeAt = 12, directoryAt = 16, crcAt = 16;
constexpr std::array<std::size_t, 3> variableLengthsAt { 28, 30, 32 };

/** Of every file of an archive, in the order of its directory; what cannot be read is left out. */
std::vector<juce::uint32> readChecksums(const juce::File& file)
{
    juce::MemoryBlock archive;
    if (!file.loadFileAsData(archive))
        return {};
    const auto* bytes = static_cast<const char*>(archive.getData());
    const auto size = archive.getSize();
    const auto word = [bytes](std::size_t at) { return juce::ByteOrder::littleEndianInt(bytes + at); };
    std::vector<juce::uint32> checksums;
    for (std::size_t tail = endLength; tail <= std::min(size, endLength + longestComment); ++tail)
    {
        if (word(size - tail) != endSignature)
            continue;
        std::size_t at = word(size - tail + directoryAt);
        const auto end = std::min(size, at + word(size - tail + directorySizeAt));
        while (at + entryLength <= end && word(at) == entrySignature)
        {
            checksums.push_back(word(at + crcAt));
            const auto entry = at;
            at += entryLength;
            for (const auto length : variableLengthsAt)
                at += juce::ByteOrder::littleEndianShort(bytes + entry + length);
        }
        break;
    }
    return checksums;
}

juce::String normalised(const juce::String& name)
{
    return name.replaceCharacter('\\', '/').trimCharactersAtStart("/").toLowerCase();
}

/** The archive hands out names as they are, and a text that is no UTF-8 must not reach the string functions. */
bool isWellFormed(const juce::String& name)
{
    return juce::CharPointer_UTF8::isValidString(name.toRawUTF8(), static_cast<int>(name.getNumBytesAsUTF8()));
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
        logger().error("the resource pack is missing: " + pack);
        return false;
    }
    const auto archive = std::make_shared<juce::ZipFile>(file);
    const auto checksums = readChecksums(file);
    if (archive->getNumEntries() == 0 || static_cast<std::size_t>(archive->getNumEntries()) != checksums.size())
    {
        logger().error("the resource pack is empty or damaged: " + pack);
        return false;
    }
    for (int index = 0; index < archive->getNumEntries(); ++index)
    {
        const auto name = archive->getEntry(index)->filename;
        if (isWellFormed(name))
            entries.try_emplace(normalised(prefix + name),
                                Entry { archive, index, checksums[static_cast<std::size_t>(index)] });
        else
            logger().error("the resource pack has a damaged name: " + pack);
    }
    return true;
}

std::unique_ptr<juce::InputStream> CVXResPathManager::open(const juce::String& name)
{
    const auto found = entries.find(normalised(name));
    if (found == entries.end() || found->second.refused)
        return nullptr;
    auto stream = openWhole(found->second);
    if (stream == nullptr)
    {
        found->second.refused = true;
        logger().error("the file is too large or damaged: " + name);
    }
    return stream;
}

std::unique_ptr<juce::InputStream> CVXResPathManager::openWhole(const Entry& entry)
{
    const auto size = entry.pack->getEntry(entry.index)->uncompressedSize;
    if (size > maxFileSize)
        return nullptr;
    // One byte more than there should be: a content that goes on is as wrong as one that ends early.
    juce::MemoryBlock content(static_cast<std::size_t>(size) + 1);
    const std::unique_ptr<juce::InputStream> stream { entry.pack->createStreamForEntry(entry.index) };
    const int length = stream == nullptr ? 0 : stream->read(content.getData(), static_cast<int>(size) + 1);
    content.setSize(static_cast<std::size_t>(size));
    if (length != size || crc32_z(0, static_cast<const Bytef*>(content.getData()), content.getSize()) != entry.crc)
        return nullptr;
    return std::make_unique<juce::MemoryInputStream>(std::move(content));
}

bool CVXResPathManager::contains(const juce::String& name) const
{
    return entries.contains(normalised(name));
}

juce::uint32 CVXResPathManager::checksumOf(const juce::String& name) const
{
    const auto found = entries.find(normalised(name));
    return found == entries.end() ? 0 : found->second.crc;
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
