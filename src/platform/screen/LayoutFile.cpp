#include "platform/screen/LayoutFile.h"

#include <zlib.h>

namespace Platform
{

namespace
{

constexpr juce::int64 headerSize = 8;
constexpr juce::int64 maxTreeSize = 1024 * 1024;

juce::uint32 crcOf(const juce::MemoryBlock& content)
{
    return static_cast<juce::uint32>(crc32_z(0, static_cast<const Bytef*>(content.getData()), content.getSize()));
}

} // namespace

juce::MemoryBlock writeLayout(const juce::ValueTree& layout)
{
    juce::MemoryOutputStream tree;
    layout.writeToStream(tree);
    const auto bytes = tree.getMemoryBlock();
    juce::MemoryOutputStream file;
    file.writeInt(static_cast<int>(bytes.getSize()));
    file.writeInt(static_cast<int>(crcOf(bytes)));
    file << bytes;
    return file.getMemoryBlock();
}

juce::ValueTree readLayout(juce::InputStream& content)
{
    const auto size = content.getTotalLength() - headerSize;
    if (size <= 0 || size > maxTreeSize || content.readInt() != size)
        return {};
    const auto crc = static_cast<juce::uint32>(content.readInt());
    juce::MemoryBlock bytes;
    if (static_cast<juce::int64>(content.readIntoMemoryBlock(bytes, size)) != size || crcOf(bytes) != crc)
        return {};
    return juce::ValueTree::readFromData(bytes.getData(), bytes.getSize());
}

} // namespace Platform
