#include "factory/SystemFactory.h"

#include "EngineApi/Provided.h"
#include "EngineLayer/autotest/CATestSessionManager.h"
#include "EngineLayer/channel/RemoteSessionManager.h"
#include "EngineLayer/devices/DeviceStatusManager.h"
#include "EngineLayer/hostlink/HostSessionManager.h"
#include "EngineLayer/keys/KeyManager.h"
#include "EngineLayer/network/NavicoManager.h"
#include "EngineLayer/settings/DataManager.h"
#include "EngineLayer/system/SystemStateManager.h"
#include "EngineLayer/wiredremote/TLX70Dev.h"
#include "Extend/ExeMonitor.h"
#include "Extend/ViewManager.h"
#include "dsp/akm/ak773ChipManager.h"
#include "kernel/ComponentRegistration.h"
#include "kernel/SystemEngine.h"
#include "lowlayer/HostcommDev.h"

namespace Factory
{

namespace
{

/** Priorities on the scale 0 to 10. */
constexpr int aboveNormal = 7;
constexpr int normal = 5;

template <typename T>
Kernel::SystemTask* instanceOf()
{
    return T::getInstance();
}

void addComponent(const juce::String& group, Kernel::SystemTask* component, Kernel::ComponentId id)
{
    component->assignId(id);
    Kernel::SystemEngine::getInstance()->registerComponent(group, component);
}

} // namespace

void SystemFactory::build()
{
    using namespace EngineLayer;
    struct Manager
    {
        Kernel::ComponentId id;
        const juce::String& group;
        Kernel::SystemTask* (*instance)();
    };
    const Manager managers[] = {
        { Kernel::hostcommDevId, highGroup, instanceOf<LowLayer::HostcommDev> },
        { Kernel::hostSessionManagerId, highGroup, instanceOf<HostSessionManager> },
        { Kernel::remoteSessionManagerId, highGroup, instanceOf<RemoteSessionManager> },
        { Kernel::deviceStatusManagerId, systemGroup, instanceOf<DeviceStatusManager> },
        { Kernel::keyManagerId, systemGroup, instanceOf<KeyManager> },
        { Kernel::systemStateManagerId, systemGroup, instanceOf<SystemStateManager> },
        { Kernel::navicoManagerId, systemGroup, instanceOf<NavicoManager> },
        { Kernel::dataManagerId, normalGroup, instanceOf<DataManager> },
        { Kernel::exeMonitorId, normalGroup, instanceOf<Extend::ExeMonitor> },
        { Kernel::wiredRemoteId, normalGroup, instanceOf<TLX70Dev> },
        { Kernel::viewManagerId, normalGroup, instanceOf<Extend::ViewManager> },
    };

    auto* engine = Kernel::SystemEngine::getInstance();
    engine->createGroup(highGroup, aboveNormal);
    engine->createGroup(normalGroup, normal);
    engine->createGroup(lowGroup, normal);
    engine->createGroup(systemGroup, aboveNormal);

    // Ports open while the components are initialised, and what comes in is posted at once: every route is there
    // before.
    const auto* applications = Kernel::ComponentRegistration::head();
    for (const auto* record = applications; record != nullptr; record = record->next)
        engine->addRoute(lowGroup, record->id);
    for (const auto& manager : managers)
        engine->addRoute(manager.group, manager.id);

    for (const auto* record = applications; record != nullptr; record = record->next)
        addComponent(lowGroup, record->creator(), record->id);
    EngineApi::Provided<Dsp::ChipManager>::set(Dsp::ak773ChipManager::getInstance());
    EngineApi::Provided<EngineApi::WiredRemote>::set(TLX70Dev::getInstance());
    for (const auto& manager : managers)
        addComponent(manager.group, manager.instance(), manager.id);
    // After the host session, which its thread sends through: the framework deletes in reverse order.
    EngineApi::Provided<EngineApi::AutoTestSession>::set(CATestSessionManager::getInstance());
}

} // namespace Factory
