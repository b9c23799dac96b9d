#pragma once

#include "platform/base/Shared.h"

#include <array>
#include <cstdint>
#include <vector>

namespace EngineLayer
{

/**
    Which of the tracked devices are present, and which the unit has reported. Presence is set and read from any thread;
    reporting belongs to one.
*/
class DeviceTable
{
public:
    /** The two data bytes of the device status that the microcontroller is told. */
    struct StatusBytes
    {
        std::uint8_t usb = 0;
        std::uint8_t others = 0;
        bool operator==(const StatusBytes&) const = default;
    };

    /** True when that changed something; kinds that are not tracked are ignored. */
    bool set(int kind, bool present);
    /** False for a kind that is not tracked. */
    bool isPresent(int kind) const;

    /** True when nothing has changed since the last report. */
    bool isReported() const;
    /**
        The kinds that have changed since the last report, in the order of their announcement; they count as reported
        now.
    */
    std::vector<int> takeChanges();
    /** The status as last reported. */
    StatusBytes getReportedStatus() const;

private:
    static constexpr std::size_t size = 9;
    using Snapshot = std::array<bool, size>;

    Snapshot snapshot() const;
    bool wasReported(int kind) const;

    std::array<Platform::Shared<bool>, size> present {};
    Snapshot reported {};
};

} // namespace EngineLayer
