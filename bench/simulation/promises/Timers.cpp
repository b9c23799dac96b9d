#include "ApplicationLayer/framework/AppHandler.h"
#include "EngineApi/Pages.h"
#include "EngineLayer/devices/DeviceStatusManager.h"
#include "EngineLayer/schedule/ApplicationManager.h"
#include "EngineLayer/wiredremote/TLX70Dev.h"
#include "Extend/ExeMonitor.h"
#include "bench/simulation/Promises.h"
#include "bench/text/Names.h"
#include "kernel/MessageIds.h"

#include <algorithm>
#include <cxxabi.h>
#include <map>
#include <memory>
#include <typeinfo>

namespace Simulation
{

namespace
{

using Platform::MultiTimer;

std::string nameOf(const std::type_info& type)
{
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, nullptr),
                                                           std::free);
    return name == nullptr ? type.name() : name.get();
}

/** Null for a component without timers. */
MultiTimer* timersOfPage(int page)
{
    auto* handler = dynamic_cast<ApplicationLayer::AppHandler*>(EngineApi::getHandler(page).get());
    return handler == nullptr ? nullptr : &handler->getTimers();
}

MultiTimer* timersOf(Kernel::SystemTask& component, const Kernel::SystemMessage& message)
{
    if (message.receiver == Kernel::systemStateManagerId &&
        message.arg1 == EngineLayer::ApplicationManager::backgroundTimer)
        return EngineLayer::ApplicationManager::getInstance();
    return message.handlerIndex >= 0 ? timersOfPage(message.handlerIndex) : dynamic_cast<MultiTimer*>(&component);
}

/** Expiries that components have handled. */
class Expiries
{
public:
    void watch(SimulatedUnit& unit)
    {
        unit.lookout.messages.add(
            [this, &scheduler = unit.scheduler](Kernel::SystemTask& component, const Kernel::SystemMessage& message)
            {
                if (message.id == Kernel::MSG_SYS_TIMER)
                    onExpiry(scheduler, component, message);
            });
    }

    std::string wrong() const { return broken; }

private:
    struct Handled
    {
        std::uint64_t start;
        int count;
    };
    std::map<std::pair<const MultiTimer*, int>, Handled> handled;
    std::string broken;

    void onExpiry(const Scheduler& scheduler, Kernel::SystemTask& component, const Kernel::SystemMessage& message)
    {
        const auto* timers = timersOf(component, message);
        const auto timer = timers == nullptr ? std::nullopt : scheduler.timer(*timers, message.arg1);
        auto& own = handled[{ timers, message.arg1 }];
        if (timer && own.start != timer->start)
            own = { timer->start, 0 };
        if (broken.empty() && (!timer || ++own.count > timer->expiries))
            broken = "component " + std::to_string(message.receiver) + " handles timer " +
                     std::to_string(message.arg1) + ", which has been " + (timer ? "started anew" : "stopped");
    }
};

std::string noneIsStale(SimulatedUnit&, const Since&)
{
    return only<Expiries>().wrong();
}

struct Lasting
{
    const MultiTimer* owner;
    int id;
    bool operator==(const Lasting&) const = default;
};

/** Those that run as long as the unit does. */
bool isLasting(const Lasting& timer)
{
    using Devices = EngineLayer::DeviceStatusManager;
    using EngineLayer::TLX70Dev;
    using Extend::ExeMonitor;
    const Lasting all[] {
        { Devices::getInstance(), Devices::usbScanTimer },   { Devices::getInstance(), Devices::cameraVideoTimer },
        { Devices::getInstance(), Devices::heartbeatTimer }, { ExeMonitor::getInstance(), ExeMonitor::heartbeatTimer },
        { TLX70Dev::getInstance(), TLX70Dev::refreshTimer },
    };
    return std::ranges::find(all, timer) != std::end(all);
}

/** A timer that runs out at rest is stopped by what it does, unless it is one of those. */
std::string onlyLastingOnes(SimulatedUnit& unit, const Since&)
{
    for (const auto& timer : unit.scheduler.runningTimers())
    {
        const auto begin = timer.due - std::chrono::milliseconds(timer.intervalMs);
        const bool ranOutAtRest = timer.expiries > 0 && begin > unit.scheduler.now() - quietTime;
        if (ranOutAtRest && !isLasting({ timer.owner, timer.id }))
            return "timer " + std::to_string(timer.id) + " of " + nameOf(typeid(*timer.owner)) + " goes on every " +
                   std::to_string(timer.intervalMs) + " ms";
    }
    return {};
}

constexpr Promise all[] {
    { "no timer that was stopped is heard of", noneIsStale, false, watchWith<Expiries> },
    { "at rest only the timers run that always do", onlyLastingOnes, true },
};

} // namespace

std::span<const Promise> timerPromises()
{
    return all;
}

} // namespace Simulation
