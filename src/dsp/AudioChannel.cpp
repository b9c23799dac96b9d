#include "dsp/AudioChannel.h"

#include "platform/base/Pubhead.h"

#include <array>

namespace Dsp
{

namespace
{

constexpr std::array audioChannelNames {
    "eAudioTuner", "eAudioWince",      "eAudioDisc",    "eAudioAux1",     "eAudioAux2",  "eAudioDVBT", "eAudioSirius",
    "eAudioXM",    "eAudioHDRadio",    "eAudioBT",      "eAudioTunerISR", "eAudioAVOff", "eAudioDAB",  "eAudioHDMI",
    "eAudioWifi",  "eAudioTelematics", "eAudioBTAudio", "eAudioFM",       "eAudioAM",    "eAudioWB",   "eAudioPandora"
};
static_assert(audioChannelNames.size() == noAudioChannel);

} // namespace

const char* audioChannelName(int channel)
{
    return Pubhead::nameIn(audioChannelNames, channel);
}

} // namespace Dsp
