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
    if (owner != nullptr)
        owner->spare.give(*this);
}

BytePoolStore::BytePoolStore(const char* name, int sizeOfBuffers)
    : spare(name)
    , bufferSize(sizeOfBuffers)
{
}

BytePool::Ptr BytePoolStore::obtain()
{
    if (auto buffer = spare.take(); buffer != nullptr)
        return buffer;
    return new BytePool(bufferSize, this);
}

} // namespace LowLayer
