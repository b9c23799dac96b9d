#include "EngineLayer/autotest/AutoTestFrame.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

using namespace EngineLayer;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

std::uint8_t sum(std::span<const std::uint8_t> bytes)
{
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

/** Every part of an accepted frame is readable, and so is what is not there. */
void checkRequest(const AutoTestFrame::Request& request, std::span<const std::uint8_t> frame)
{
    const auto size = static_cast<int>(frame.size());
    require(frame[0] == 0xFF && frame[1] == 0xAA && frame[3] == size);
    require(frame.back() == sum(frame.first(frame.size() - 1)));
    for (int index = -2; index < 260; ++index)
        require(request.at(index) == (index >= 0 && index < size - 1 ? frame[static_cast<std::size_t>(index)] : 0));
    const auto parameters = request.parameters();
    require(std::equal(parameters.begin(), parameters.end(), frame.begin() + 4, frame.end() - 1));
    require(request.command() == (size > AutoTestFrame::overhead ? frame[4] : -1));
}

} // namespace

/** The input as a frame; the same closed as a frame of the equipment, which must be accepted; and as a message. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Copies of exactly the right length, so that a read past the end is seen.
    AutoTestFrame::Bytes frame(data, data + size);
    if (const auto request = AutoTestFrame::parse(frame))
        checkRequest(*request, frame);

    const AutoTestFrame::Bytes message(data, data + std::min<std::size_t>(size, AutoTestFrame::longestMessage));
    const auto built = AutoTestFrame::build(static_cast<std::uint32_t>(size), message);
    require(built.size() == message.size() + AutoTestFrame::overhead && built.size() <= HostFrame::maxDataLength);
    require(built[0] == 0xAA && built[1] == 0xEE && built[3] == built.size());
    require(built.back() == sum(std::span(built).first(built.size() - 1)));
    require(!AutoTestFrame::parse(built));

    if (size < AutoTestFrame::overhead || size > 0xff)
        return 0;
    frame[0] = 0xFF;
    frame[1] = 0xAA;
    frame[3] = static_cast<std::uint8_t>(size);
    frame.back() = sum(std::span(frame).first(size - 1));
    const auto request = AutoTestFrame::parse(frame);
    require(request.has_value());
    checkRequest(*request, frame);
    return 0;
}
