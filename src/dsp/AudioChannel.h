#pragma once

#include <cstdint>

namespace Dsp
{

/** Audio input of the DSP routing. */
// clang-format off
enum AudioChannel : std::int32_t
{
    eAudioTuner, eAudioWince, eAudioDisc, eAudioAux1, eAudioAux2, eAudioDVBT, eAudioSirius, eAudioXM, eAudioHDRadio,
    eAudioBT, eAudioTunerISR, eAudioAVOff, eAudioDAB, eAudioHDMI, eAudioWifi, eAudioTelematics, eAudioBTAudio,
    eAudioFM, eAudioAM, eAudioWB, eAudioPandora,
    noAudioChannel ///< never counts as a shared channel
};
// clang-format on

/** The exact name, for log lines; "" outside the enumeration. */
const char* audioChannelName(int channel);

} // namespace Dsp
