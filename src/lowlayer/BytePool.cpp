#include "lowlayer/BytePool.h"

#include <cstring>

namespace LowLayer
{

BytePool::BytePool(int bufferSize, BytePoolStore* owningStore)
    : data(static_cast<std::size_t>(bufferSize))
    , owner(owningStore)
{
}

void BytePool::assign(const void* source, int n)
{
    if (source == nullptr || n < 0)
        return;
    if (n > capacity())
        data = std::vector<std::uint8_t>(static_cast<std::size_t>(n));
    std::memcpy(data.data(), source, static_cast<std::size_t>(n));
    used = n;
}

void BytePool::recycle()
{
    if (owner == nullptr)
        return;
    const juce::ScopedLock guard(owner->lock);
    if (inPool || getReferenceCount() > 1)
        return;
    inPool = true;
    owner->spare.emplace_back(this);
}

BytePoolStore::BytePoolStore(int sizeOfBuffers)
    : bufferSize(sizeOfBuffers)
{
}

BytePool::Ptr BytePoolStore::obtain()
{
    {
        const juce::ScopedLock guard(lock);
        if (!spare.empty())
        {
            auto buffer = std::move(spare.back());
            spare.pop_back();
            buffer->inPool = false;
            return buffer;
        }
    }
    return new BytePool(bufferSize, this);
}

void BytePoolStore::clear()
{
    const juce::ScopedLock guard(lock);
    spare.clear();
}

} // namespace LowLayer
