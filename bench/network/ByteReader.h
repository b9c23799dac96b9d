#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace Bench
{

/**
    Reads a message of the boat's network from its begin. Numbers have their low byte first. What is read past the end
    is 0, and is remembered.
*/
class ByteReader
{
public:
    explicit ByteReader(std::span<const std::uint8_t> message)
        : bytes(message)
        , rest(message)
    {
    }

    /** `count` 0..8. */
    std::uint64_t number(int count)
    {
        std::uint64_t value = 0;
        int shift = 0;
        for (const auto byte : next(count))
        {
            value |= std::uint64_t { byte } << shift;
            shift += 8;
        }
        return value;
    }
    int byte() { return static_cast<int>(number(1)); }
    /** Fewer when fewer are left. */
    std::vector<std::uint8_t> data(int count)
    {
        const auto read = next(count);
        return { read.begin(), read.end() };
    }
    std::vector<std::uint8_t> remaining() { return data(left()); }

    int size() const { return static_cast<int>(bytes.size()); }
    int left() const { return static_cast<int>(rest.size()); }
    /** Whether more was read than was there. */
    bool isCut() const { return cut; }

private:
    std::span<const std::uint8_t> bytes, rest;
    bool cut = false;

    std::span<const std::uint8_t> next(int count)
    {
        cut = cut || count > left();
        const auto read = rest.first(static_cast<std::size_t>(std::min(count, left())));
        rest = rest.subspan(read.size());
        return read;
    }
};

} // namespace Bench
