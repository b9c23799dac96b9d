#pragma once

#include <juce_data_structures/juce_data_structures.h>

/**
    The file of a layout: a little-endian u32 with the number of bytes of the tree, a little-endian u32 with their
    CRC-32 (IEEE 802.3, as in zip), then the tree as `juce::ValueTree` writes it, and nothing after it. Length and CRC
    stand in front because the reader of the tree trusts every count that it finds.
*/
namespace Platform
{

juce::MemoryBlock writeLayout(const juce::ValueTree& layout);
/** An invalid tree when the content is not whole. Reads at most 1 MiB. */
juce::ValueTree readLayout(juce::InputStream& content);

} // namespace Platform
