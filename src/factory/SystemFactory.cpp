#include "factory/SystemFactory.h"

#include "EngineApi/Provided.h"
#include "EngineLayer/CATestSessionManager.h"
#include "EngineLayer/DataManager.h"
#include "EngineLayer/DeviceStatusManager.h"
#include "EngineLayer/HostSessionManager.h"
#include "EngineLayer/KeyManager.h"
#include "EngineLayer/NavicoManager.h"
#include "EngineLayer/RemoteSessionManager.h"
#include "EngineLayer/SystemStateManager.h"
#include "EngineLayer/TLX70Dev.h"
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

void addComponent(const juce::String& group, Kernel::SystemTask* component, Kernel::ComponentId id)
{
    component->assignId(id);
    Kernel::SystemEngine::getInstance()->registerComponent(group, component);
}

} // namespace

void SystemFactory::build()
{
    auto* engine = Kernel::SystemEngine::getInstance();
    engine->createGroup(highGroup, aboveNormal);
    engine->createGroup(normalGroup, normal);
    engine->createGroup(lowGroup, normal);
    engine->createGroup(systemGroup, aboveNormal);
    buildApplications();
    buildManagers();
}

void SystemFactory::buildApplications()
{
    for (const auto* record = Kernel::ComponentRegistration::head(); record != nullptr; record = record->next)
        addComponent(lowGroup, record->creator(), record->id);
}

void SystemFactory::buildManagers()
{
    EngineApi::Provided<ChipManager>::set(Dsp::ak773ChipManager::getInstance());
    EngineApi::Provided<EngineApi::WiredRemote>::set(EngineLayer::TLX70Dev::getInstance());
    addComponent(highGroup, LowLayer::HostcommDev::getInstance(), Kernel::hostcommDevId);
    addComponent(highGroup, EngineLayer::HostSessionManager::getInstance(), Kernel::hostSessionManagerId);
    addComponent(highGroup, EngineLayer::RemoteSessionManager::getInstance(), Kernel::remoteSessionManagerId);
    addComponent(systemGroup, EngineLayer::DeviceStatusManager::getInstance(), Kernel::deviceStatusManagerId);
    addComponent(systemGroup, EngineLayer::KeyManager::getInstance(), Kernel::keyManagerId);
    addComponent(systemGroup, EngineLayer::NavicoManager::getInstance(), Kernel::navicoManagerId);
    addComponent(systemGroup, EngineLayer::SystemStateManager::getInstance(), Kernel::systemStateManagerId);
    addComponent(normalGroup, EngineLayer::DataManager::getInstance(), Kernel::dataManagerId);
    addComponent(normalGroup, EngineLayer::ExeMonitor::getInstance(), Kernel::exeMonitorId);
    addComponent(normalGroup, EngineLayer::TLX70Dev::getInstance(), Kernel::wiredRemoteId);
    addComponent(normalGroup, EngineLayer::ViewManager::getInstance(), Kernel::viewManagerId);
    // After the host session, which its thread sends through: the framework deletes in reverse order.
    EngineApi::Provided<EngineApi::AutoTestSession>::set(EngineLayer::CATestSessionManager::getInstance());
}

} // namespace Factory
