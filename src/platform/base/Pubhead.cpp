#include "platform/base/Pubhead.h"

#include <cstring>

namespace Pubhead
{

namespace
{

constexpr std::array pageNames {
    "mbTuner",     "mbHDRadio",   "mbTunerISR",  "mbHDRadioISR",  "mbDiscAudio", "mbDiscVideo",   "mbUSBAudio",
    "mbUSBVideo",  "mbSDAudio",   "mbSDVideo",   "mbiPodAudio",   "mbiPodVideo", "mbiPodPandora", "mbBTPhone",
    "mbBTAudio",   "mbAuxin1",    "mbAuxin2",    "mbCamera",      "mbSirius",    "mbNavi",        "mbDVBT",
    "mbHDMI",      "mbMainMenu",  "mbSetup",     "mbRearAV1",     "mbRearAV2",   "mbRearDisc",    "mbRearDVBT",
    "mbReariPod",  "mbRearOff",   "mbStandby",   "mbAntitheft",   "mbEQ",        "mbDiscAuto",    "mbAVOff",
    "mbRadar",     "mbCarInfo",   "mbTPMS",      "mbMaintenance", "mbWifi",      "mbTelematics",  "mbThirdPart",
    "mbDAB",       "mbAC",        "mbSWC",       "mbUSBAudio2",   "mbUSBAudio3", "mbUSBAudio4",   "mbUSBAudio5",
    "mbUSBAudio6", "mbUSBAudio7", "mbUSBAudio8", "mbFM",          "mbAM",        "mbWB",          "NUM_OF_PAGES"
};
static_assert(pageNames.size() == NUM_OF_PAGES + 1);

constexpr std::array appTypeNames { "AppMain",    "AppMainMenu", "AppSetup",      "AppAntitheft", "AppStandby",
                                    "AppRadio",   "AppUSB",      "AppiPod",       "AppDisc",      "AppAuxIn",
                                    "AppSirius",  "AppDVBT",     "AppCamera",     "AppBluetooth", "AppEQ",
                                    "AppNavi",    "AppHDMI",     "AppPandora",    "AppHDRadio",   "AppRadar",
                                    "AppCarInfo", "AppWifi",     "AppTelematics", "AppDAB",       "AppAC",
                                    "AppSWC",     "AppUnknown" };
static_assert(appTypeNames.size() == numOfAppTypes);

} // namespace

const char* pageName(int page)
{
    return nameIn(pageNames, page);
}

int pageOfName(const char* name)
{
    for (int page = 0; page < NUM_OF_PAGES; ++page)
        if (std::strcmp(pageName(page), name) == 0)
            return page;
    return NUM_OF_PAGES;
}

const char* appTypeName(int appType)
{
    return nameIn(appTypeNames, appType);
}

} // namespace Pubhead
