#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

/** 32-bit values of the simulated buses' packets, little-endian as the machines that both ends run on. */
namespace Bench
{

static_assert(std::endian::native == std::endian::little);

template <typename Value>
void appendValue(std::vector<std::uint8_t>& bytes, Value value)
{
    const auto at = bytes.size();
    bytes.resize(at + sizeof value);
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

/** The value must lie inside. */
template <typename Value>
Value valueAt(std::span<const std::uint8_t> bytes, std::size_t at)
{
    Value value {};
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

} // namespace Bench
