#include "bench/simulation/Lookout.h"

#include "bench/text/Names.h"
#include "kernel/SystemEngine.h"

namespace Simulation
{

namespace
{

/** Lets everything through to the component behind it. */
class Watched : public Kernel::SystemTask
{
public:
    Watched(SystemTask& componentToWatch, const Lookout& lookoutToTell)
        : component(&componentToWatch)
        , lookout(lookoutToTell)
    {
        assignId(component->getId());
    }

    bool acceptMessage(const Kernel::SystemMessage& message) override { return component->acceptMessage(message); }
    void dispatchMessage(const Kernel::SystemMessage& message) override
    {
        lookout.messages.tell(*component, message);
        component->dispatchMessage(message);
    }
    void initialize() override {} // the component has been
    void onStop() override { component->onStop(); }
    void onRelease() override { component->onRelease(); }

private:
    const Ptr component;
    const Lookout& lookout;
};

} // namespace

std::vector<Kernel::TaskGroup*> taskGroups()
{
    const auto& engine = *Kernel::SystemEngine::getInstance();
    std::vector<Kernel::TaskGroup*> groups;
    for (const auto* name : Bench::groupNames())
        if (auto* group = engine.findGroup(name))
            groups.push_back(group);
    return groups;
}

void Lookout::watchComponents()
{
    for (auto* group : taskGroups())
        for (Kernel::ComponentId id = 1; id < Kernel::componentIdLimit; ++id)
            if (auto* component = group->findComponent(id))
                group->addComponent(new Watched(*component, *this));
}

} // namespace Simulation
