#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Platform
{

/**
    A sequence of bytes that is written at its end and read from its beginning, as a message of the boat's network is.
    Numbers have their low byte first. Reading past the end gives 0 and is remembered.
*/
class Parcel
{
public:
    Parcel() = default;

    /** Replaces what is there; reading begins anew. */
    void fillData(const void* bytes, int count);
    const std::uint8_t* data() const { return bytes.data(); }
    int dataSize() const { return static_cast<int>(bytes.size()); }
    /** Empty, as a new one. */
    void recycle();

    void writeByte(int value);  ///< its low 8 bits
    void writeShort(int value); ///< its low 16 bits
    void writeInt(std::int32_t value);
    void writeData(std::span<const std::uint8_t> content);
    /** The bytes of the UTF-8 text alone: no length, no end. */
    void writeString(const std::string& text);

    int readByte();
    int readShort(); ///< 0..65535
    std::int32_t readInt();
    /** The next bytes as one number, low byte first; `count` 0..8. */
    std::uint64_t readNumber(int count);
    /** Fewer when fewer are left. */
    std::vector<std::uint8_t> readData(int count);

    int readPosition() const { return position; }
    /** 0..dataSize(); clears `isCut`. */
    void setReadPosition(int newPosition);
    int bytesLeft() const { return dataSize() - position; }
    /** Whether more was read than was there. */
    bool isCut() const { return cut; }

private:
    std::vector<std::uint8_t> bytes;
    int position = 0;
    bool cut = false;
};

} // namespace Platform
