#pragma once

#include "kernel/SystemMessage.h"
#include "platform/base/Pool.h"

#include <cstdint>
#include <juce_core/juce_core.h>
#include <span>
#include <vector>

namespace LowLayer
{

class BytePoolStore;

/** One reusable byte buffer. Owned by one thread at a time: the one that holds the message that carries it. */
class BytePool : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<BytePool>;

    /** The store outlives every `recycle`; null for a buffer that belongs to none. */
    BytePool(int bufferSize, BytePoolStore* owningStore);

    /** Copies n bytes in; the buffer grows to exactly n when they do not fit. Nothing happens without a source. */
    void assign(const void* source, int n);

    const std::uint8_t* dataPointer() const { return data.data(); }
    int length() const { return used; }
    int capacity() const { return static_cast<int>(data.size()); }

    /** Gives the buffer back to its store when the caller's is the last reference; else nothing happens. */
    void recycle();

private:
    std::vector<std::uint8_t> data;
    int used = 0;
    BytePoolStore* owner;
};

/** Spare buffers of one size. Never refuses: an empty store makes a new buffer. Any thread. */
class BytePoolStore
{
public:
    /** The name is a literal. */
    BytePoolStore(const char* name, int sizeOfBuffers);

    /** The buffer that came back last, with its old content, or a new one of length 0. */
    BytePool::Ptr obtain();
    void clear() { spare.clear(); }

private:
    friend class BytePool;

    Platform::Pool<BytePool> spare;
    int bufferSize;
};

/** The bytes of a message's payload, none when it carries no buffer. They last as long as the payload. */
inline std::span<const std::uint8_t> bytesOf(const Kernel::Payload& payload)
{
    const auto* buffer = Kernel::payloadAs<BytePool>(payload);
    return buffer != nullptr ? std::span(buffer->dataPointer(), static_cast<std::size_t>(buffer->length()))
                             : std::span<const std::uint8_t>();
}

/** Gives a message's buffer back; nothing when it carries none. */
inline void recycleBytes(const Kernel::Payload& payload)
{
    if (auto* buffer = Kernel::payloadAs<BytePool>(payload))
        buffer->recycle();
}

} // namespace LowLayer
