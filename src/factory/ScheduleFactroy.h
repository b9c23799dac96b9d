#pragma once

#include "kernel/Singleton.h"
#include "platform/base/Pubhead.h"

#include <utility>

namespace Factory
{

/** Fixed rules: what replaces a page that cannot be used, and the MCU's numbers of the sources. Any thread. */
class ScheduleFactroy : public Kernel::Singleton<ScheduleFactroy>
{
public:
    int defaultSource() const { return Pubhead::mbAVOff; }

    /** True for the four plain tuner pages: `defaultSource` is started in their place. */
    bool isTunerPage(int page) const;

    /** The page when it is registered as an available normal source, else `defaultSource`. */
    int checkNormalSource(int page) const;
    /** The page when it is registered as an available rear page, else mbRearOff. */
    int checkRearPage(int page) const;

    /** NUM_OF_PAGES, no page, is valid too. */
    bool isValidPage(int value) const { return value >= 0 && value <= Pubhead::NUM_OF_PAGES; }
    int validPage(int value) const { return isValidPage(value) ? value : static_cast<int>(Pubhead::NUM_OF_PAGES); }

    /** The page of a source in the MCU's terms; mbFM for a type that is not listed. */
    int pageForMcuSource(int type, int number) const;
    /** Type and number; (0, 0) for a page that the MCU has no number for. */
    std::pair<int, int> mcuSourceForPage(int page) const;
};

} // namespace Factory
