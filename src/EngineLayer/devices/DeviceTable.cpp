#include "EngineLayer/devices/DeviceTable.h"

#include "EngineApi/DeviceStatus.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

using namespace EngineApi;

/** In the order in which changes are announced. */
constexpr std::array tracked { iPodConnected, usbStorage,   bluetoothConnected, pandoraOniPod, pandoraOnBluetooth,
                               cameraVideo,   triggerInput, satelliteTuner,     spareDevice };

/** What each kind sets in the second status byte. */
struct StatusBit
{
    DeviceKind kind;
    std::uint8_t mask;
};
constexpr StatusBit statusBits[] = {
    { iPodConnected, 1 << 1 },      { bluetoothConnected, 1 << 2 }, { pandoraOniPod, 1 << 3 },
    { pandoraOnBluetooth, 1 << 3 }, { satelliteTuner, 1 << 4 },
};

constexpr std::size_t untracked = tracked.size();

std::size_t indexOf(int kind)
{
    return static_cast<std::size_t>(std::find(tracked.begin(), tracked.end(), kind) - tracked.begin());
}

} // namespace

bool DeviceTable::set(int kind, bool isThere)
{
    static_assert(tracked.size() == size);
    const auto index = indexOf(kind);
    return index != untracked && present[index].exchange(isThere) != isThere;
}

bool DeviceTable::isPresent(int kind) const
{
    const auto index = indexOf(kind);
    return index != untracked && present[index];
}

DeviceTable::Snapshot DeviceTable::snapshot() const
{
    Snapshot copy {};
    std::copy(present.begin(), present.end(), copy.begin());
    return copy;
}

bool DeviceTable::isReported() const
{
    return snapshot() == reported;
}

std::vector<int> DeviceTable::takeChanges()
{
    const auto now = snapshot();
    std::vector<int> changes;
    for (std::size_t index = 0; index < size; ++index)
        if (now[index] != reported[index])
            changes.push_back(tracked[index]);
    reported = now;
    return changes;
}

bool DeviceTable::wasReported(int kind) const
{
    return reported[indexOf(kind)];
}

DeviceTable::StatusBytes DeviceTable::getReportedStatus() const
{
    StatusBytes status;
    status.usb = wasReported(usbStorage) ? 1 : 0;
    for (const auto& bit : statusBits)
        if (wasReported(bit.kind))
            status.others = static_cast<std::uint8_t>(status.others | bit.mask);
    return status;
}

} // namespace EngineLayer
