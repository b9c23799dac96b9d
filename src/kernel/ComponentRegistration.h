#pragma once

#include "kernel/SystemTask.h"

namespace Kernel
{

/**
    A record that an application task places in a global list from a static initialiser, so that the factory finds it
    without naming it:

        const Kernel::ComponentRegistration registration { Kernel::radioApplicationId, [] { return ...; } };

    A new record goes to the head of the list.
*/
struct ComponentRegistration
{
    using Creator = SystemTask* (*)();

    ComponentRegistration(ComponentId componentId, Creator componentCreator)
        : id(componentId)
        , creator(componentCreator)
        , next(head())
    {
        head() = this;
    }

    static const ComponentRegistration*& head()
    {
        static const ComponentRegistration* first = nullptr;
        return first;
    }

    ComponentId id;
    Creator creator;
    const ComponentRegistration* next;
};

} // namespace Kernel
