#include "platform/marine/Parcel.h"

#include <algorithm>
#include <cstdlib>

using Platform::Parcel;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/** Writes what a reader reads; the copy is then the part of the original that was there. */
void copy(Parcel& from, Parcel& to, std::uint8_t step)
{
    constexpr int kinds = 5;
    const int argument = step / kinds;
    switch (step % kinds)
    {
    case 0:
        return to.writeByte(from.readByte());
    case 1:
        return to.writeShort(from.readShort());
    case 2:
        return to.writeInt(from.readInt());
    case 3:
        return to.writeData(from.readData(argument));
    default:
        const auto bytes = from.readData(argument);
        return to.writeString(std::string(bytes.begin(), bytes.end()));
    }
}

} // namespace

/** The first byte says how many steps there are; the steps follow, then what is read. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const auto steps = std::min<std::size_t>(data[0], size - 1);
    const auto* content = data + 1 + steps;
    const auto length = static_cast<int>(size - 1 - steps);
    Parcel original, copied;
    original.fillData(content, length);
    for (std::size_t i = 0; i < steps; ++i)
    {
        copy(original, copied, data[1 + i]);
        require(original.readPosition() + original.bytesLeft() == length && original.bytesLeft() >= 0);
    }
    const int read = original.readPosition();
    require(copied.dataSize() >= read && (original.isCut() || copied.dataSize() == read));
    require(std::equal(content, content + read, copied.data()));
    original.setReadPosition(read + 1);
    require(!original.isCut() && original.readPosition() <= length);
    original.recycle();
    require(original.dataSize() == 0 && original.readByte() == 0 && original.isCut());
    return 0;
}
