#pragma once

#include "platform/base/CommandLine.h"
#include "platform/channel/RemoteMessageIds.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ApplicationLayer
{

/** What the radio program is told of the tuner: the key of a message body. */
enum RadioBodyKey : juce::int32 {
    radioFrequency = Platform::radioBodyFrequency, ///< of the reported band, as the tuner counts it
    radioBand = Platform::radioBodyBand,
    radioProgrammeName = Platform::radioBodyName,        ///< 8 bytes
    radioTextKey = Platform::radioBodyText,              ///< 64 bytes
    radioStereo = Platform::radioBodyStereo,             ///< while the program tests the sensitivity
    radioArea = Platform::radioBodyArea,                 ///< the tuner's region
    radioSensitivityKey = Platform::radioBodySensitivity ///< of the current band, while the program tests it
};

/** The values that wait for the radio program, which gets them in one batch. The application's thread. */
class RadioBodies
{
public:
    /** When more wait, the next value discards them all as outdated. So many wait only without a program. */
    static constexpr std::size_t outdated = 50;
    /** At most so many wait, texts included; of more the oldest is discarded. */
    static constexpr std::size_t capacity = 100;

    void addValue(RadioBodyKey key, juce::int32 value);
    void addData(RadioBodyKey key, std::span<const std::uint8_t> bytes);
    /** Sends all in one RMSG_RADIO_NOTIFY, if there are any; without a program they go on waiting. */
    void flush();

    /** Number of bodies that were discarded. */
    int getDiscarded() const { return discarded; }

private:
    using MessageBody = Platform::RemoteObjFormat::MessageBody;

    void add(MessageBody body);
    void discard(std::size_t oldest);

    std::vector<MessageBody> waiting;
    int discarded = 0;
};

} // namespace ApplicationLayer
