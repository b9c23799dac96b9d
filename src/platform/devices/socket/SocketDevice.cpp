#include "platform/devices/socket/SocketDevice.h"

#include "platform/config/Configuration.h"

namespace Platform
{

juce::String SocketDevice::pathOf(const juce::String& configured)
{
    return Configuration::isSimulated(configured)
               ? configured.fromFirstOccurrenceOf(Configuration::simulated, false, false)
               : juce::String();
}

juce::Result SocketDevice::operate(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply, size_t size)
{
    size_t length = 0;
    if (auto result = exchange(request, reply, length); result.failed())
        return result;
    if (length < statusSize)
        return juce::Result::fail("a reply of " + juce::String(static_cast<int>(length)) + " bytes is too short");
    if (const auto status = static_cast<juce::int32>(juce::ByteOrder::littleEndianInt(reply.data())); status != 0)
        return juce::Result::fail("the device answers " + juce::String(status));
    if (length < size)
        return juce::Result::fail("the reply lacks the value");
    return juce::Result::ok();
}

} // namespace Platform
