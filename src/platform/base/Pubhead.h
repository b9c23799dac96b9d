#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/**
    The two enumerations that every program of the unit shares: the pages of the screen and the programs that own them.
*/
namespace Pubhead
{

/** A page is one screen of one source program. NUM_OF_PAGES also stands for "no page". */
// clang-format off
enum eAppServiceType : std::int32_t
{
    mbTuner, mbHDRadio, mbTunerISR, mbHDRadioISR, mbDiscAudio, mbDiscVideo, mbUSBAudio, mbUSBVideo, mbSDAudio,
    mbSDVideo, mbiPodAudio, mbiPodVideo, mbiPodPandora, mbBTPhone, mbBTAudio, mbAuxin1, mbAuxin2, mbCamera, mbSirius,
    mbNavi, mbDVBT, mbHDMI, mbMainMenu, mbSetup, mbRearAV1, mbRearAV2, mbRearDisc, mbRearDVBT, mbReariPod, mbRearOff,
    mbStandby, mbAntitheft, mbEQ, mbDiscAuto, mbAVOff, mbRadar, mbCarInfo, mbTPMS, mbMaintenance, mbWifi, mbTelematics,
    mbThirdPart, mbDAB, mbAC, mbSWC, mbUSBAudio2, mbUSBAudio3, mbUSBAudio4, mbUSBAudio5, mbUSBAudio6, mbUSBAudio7,
    mbUSBAudio8, mbFM, mbAM, mbWB, NUM_OF_PAGES
};
// clang-format on

/** The source program (process) that owns a page; AppMain is the engine itself, AppUnknown none. */
// clang-format off
enum AppType : std::int32_t
{
    AppMain, AppMainMenu, AppSetup, AppAntitheft, AppStandby, AppRadio, AppUSB, AppiPod, AppDisc, AppAuxIn, AppSirius,
    AppDVBT, AppCamera, AppBluetooth, AppEQ, AppNavi, AppHDMI, AppPandora, AppHDRadio, AppRadar, AppCarInfo, AppWifi,
    AppTelematics, AppDAB, AppAC, AppSWC, AppUnknown
};
// clang-format on

/** Number of application types, AppUnknown included: a type is valid when 0 <= type < numOfAppTypes. */
inline constexpr int numOfAppTypes = AppUnknown + 1;

/** The entry of a table of names; "" outside it. */
template <typename Names>
const char* nameIn(const Names& names, int value)
{
    return value >= 0 && value < static_cast<int>(names.size()) ? names[static_cast<std::size_t>(value)] : "";
}

/** "mbTuner" ... "NUM_OF_PAGES"; "" outside 0..55. */
const char* pageName(int page);
/** The page of that name, or NUM_OF_PAGES. */
int pageOfName(const char* name);
/** "AppMain" ... "AppUnknown"; "" outside 0..26. */
const char* appTypeName(int appType);

} // namespace Pubhead
