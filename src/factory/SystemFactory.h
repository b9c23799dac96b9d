#pragma once

#include "kernel/Singleton.h"

namespace Factory
{

/** Builds the engine: the task groups, then every component in its fixed order. */
class SystemFactory : public Kernel::Singleton<SystemFactory>
{
public:
    /** Once, on the message thread. Each component's `initialize` runs in here. */
    void build();

private:
    const juce::String highGroup = "GeneralHighGroup";
    const juce::String normalGroup = "GeneralNormalGroup";
    const juce::String lowGroup = "GeneralLowGroup";
    const juce::String systemGroup = "SystemGroup";
};

} // namespace Factory
