#include "EngineLayer/settings/WaitingChanges.h"

#include "platform/base/Logger.h"

namespace EngineLayer
{

bool WaitingChanges::add(int index, int origin)
{
    const std::lock_guard guard(lock);
    auto& count = waiting[{ index, origin }];
    if (count < most)
    {
        ++count;
        return true;
    }
    ++leftOut;
    if (mentioned.insert(index).second)
        Platform::Log("EngineApi/WaitingChanges", "DataManager")().error(
            "setting %d changes faster than the %s can follow; values in between "
            "are left out",
            index, receiver);
    return false;
}

void WaitingChanges::remove(int index, int origin)
{
    const std::lock_guard guard(lock);
    const auto found = waiting.find({ index, origin });
    if (found != waiting.end() && --found->second == 0)
        waiting.erase(found);
}

std::uint64_t WaitingChanges::getLeftOut() const
{
    const std::lock_guard guard(lock);
    return leftOut;
}

} // namespace EngineLayer
