#include "ApplicationLayer/radio/RadioBodies.h"

#include "EngineApi/Programs.h"
#include "platform/base/Pubhead.h"

namespace ApplicationLayer
{

namespace
{

/** Kinds of bodies: `value` is the value itself, or the number of bytes. */
constexpr juce::int32 valueBody = 1328;
constexpr juce::int32 dataBody = 74;

} // namespace

void RadioBodies::addValue(RadioBodyKey key, juce::int32 value)
{
    if (waiting.size() > outdated)
        discard(waiting.size());
    add({ valueBody, key, value, {} });
}

void RadioBodies::addData(RadioBodyKey key, std::span<const std::uint8_t> bytes)
{
    add({ dataBody, key, static_cast<juce::int32>(bytes.size()), { bytes.data(), bytes.size() } });
}

void RadioBodies::add(MessageBody body)
{
    if (waiting.size() == capacity)
        discard(1);
    waiting.push_back(std::move(body));
}

void RadioBodies::discard(std::size_t oldest)
{
    discarded += static_cast<int>(oldest);
    waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(oldest));
}

void RadioBodies::flush()
{
    if (waiting.empty() || EngineApi::getAppState(Pubhead::AppRadio) == EngineApi::kDisconnect)
        return;
    const auto batch = std::exchange(waiting, {});
    EngineApi::sendRemoteMessage(Pubhead::AppRadio, EngineApi::RMSG_RADIO_NOTIFY, 0,
                                 static_cast<juce::int32>(batch.size()),
                                 Platform::RemoteObjFormat::formatMessageBodyList(batch));
}

} // namespace ApplicationLayer
