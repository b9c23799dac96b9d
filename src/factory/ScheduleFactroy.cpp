#include "factory/ScheduleFactroy.h"

#include "EngineApi/Pages.h"

namespace Factory
{

namespace
{

struct McuSource
{
    int type;
    int page;
};

/** One source a type. USB is the exception: its number tells the pages apart. */
constexpr McuSource mcuSources[] {
    { 0, Pubhead::mbAM },     { 1, Pubhead::mbFM },           { 2, Pubhead::mbDiscAudio }, { 5, Pubhead::mbAuxin2 },
    { 8, Pubhead::mbSirius }, { 9, Pubhead::mbiPodAudio },    { 10, Pubhead::mbUSBAudio }, { 13, Pubhead::mbBTAudio },
    { 17, Pubhead::mbAVOff }, { 21, Pubhead::mbiPodPandora }, { 22, Pubhead::mbWB }
};
constexpr int usbType = 10;

/** USB number 0, and every number that names no further page, is the first USB page; 1 to 7 are the seven after it. */
constexpr int firstFurtherUsb = Pubhead::mbUSBAudio2;
constexpr int lastFurtherUsb = Pubhead::mbUSBAudio8;
constexpr int furtherUsbPages = lastFurtherUsb - firstFurtherUsb + 1;

} // namespace

bool ScheduleFactroy::isTunerPage(int page) const
{
    return page >= Pubhead::mbTuner && page <= Pubhead::mbHDRadioISR;
}

int ScheduleFactroy::checkNormalSource(int page) const
{
    return EngineApi::isNormalSource(page) && EngineApi::isAvailable(page) ? page : defaultSource();
}

int ScheduleFactroy::checkRearPage(int page) const
{
    return EngineApi::isRearPage(page) && EngineApi::isAvailable(page) ? page : static_cast<int>(Pubhead::mbRearOff);
}

int ScheduleFactroy::pageForMcuSource(int type, int number) const
{
    if (type == usbType && number >= 1 && number <= furtherUsbPages)
        return firstFurtherUsb + number - 1;
    for (const auto& source : mcuSources)
        if (source.type == type)
            return source.page;
    return Pubhead::mbFM;
}

std::pair<int, int> ScheduleFactroy::mcuSourceForPage(int page) const
{
    if (page >= firstFurtherUsb && page <= lastFurtherUsb)
        return { usbType, page - firstFurtherUsb + 1 };
    for (const auto& source : mcuSources)
        if (source.page == page)
            return { source.type, 0 };
    return { 0, 0 };
}

} // namespace Factory
