#include "platform/marine/Parcel.h"

#include <algorithm>

namespace Platform
{

namespace
{

constexpr int byteBits = 8;

} // namespace

void Parcel::fillData(const void* content, int count)
{
    const auto* first = static_cast<const std::uint8_t*>(content);
    bytes.assign(first, first + std::max(count, 0));
    setReadPosition(0);
}

void Parcel::recycle()
{
    bytes.clear();
    setReadPosition(0);
}

void Parcel::writeByte(int value)
{
    bytes.push_back(static_cast<std::uint8_t>(value));
}

void Parcel::writeShort(int value)
{
    writeByte(value);
    writeByte(value >> byteBits);
}

void Parcel::writeInt(std::int32_t value)
{
    writeShort(value);
    writeShort(value >> 2 * byteBits);
}

void Parcel::writeData(std::span<const std::uint8_t> content)
{
    bytes.insert(bytes.end(), content.begin(), content.end());
}

void Parcel::writeString(const std::string& text)
{
    bytes.insert(bytes.end(), text.begin(), text.end());
}

std::uint64_t Parcel::readNumber(int count)
{
    std::uint64_t value = 0;
    cut = cut || count > bytesLeft();
    for (int i = 0; i < count && position < dataSize(); ++i)
        value |= static_cast<std::uint64_t>(bytes[static_cast<std::size_t>(position++)]) << (i * byteBits);
    return value;
}

int Parcel::readByte()
{
    return static_cast<int>(readNumber(sizeof(std::uint8_t)));
}

int Parcel::readShort()
{
    return static_cast<int>(readNumber(sizeof(std::uint16_t)));
}

std::int32_t Parcel::readInt()
{
    return static_cast<std::int32_t>(readNumber(sizeof(std::uint32_t)));
}

std::vector<std::uint8_t> Parcel::readData(int count)
{
    cut = cut || count > bytesLeft();
    const auto first = bytes.begin() + position;
    position += std::clamp(count, 0, bytesLeft());
    return { first, bytes.begin() + position };
}

void Parcel::setReadPosition(int newPosition)
{
    position = std::clamp(newPosition, 0, dataSize());
    cut = false;
}

} // namespace Platform
