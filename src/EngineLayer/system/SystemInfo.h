#pragma once

#include "kernel/Singleton.h"

namespace EngineLayer
{

/**
    Publishes the items of system information to every other process: in the shared table, as a broadcast on the message
    channel and as a window message. Setting the same value again announces it again. Any thread.
*/
class SystemInfo : public Kernel::Singleton<SystemInfo>
{
public:
    ~SystemInfo() override;

    /** Index 0 to 127. The value is in the table before it is announced. */
    void set(int index, juce::int32 value);
    juce::int32 get(int index) const;

private:
    friend class Kernel::Singleton<SystemInfo>;
    SystemInfo() = default;
};

} // namespace EngineLayer
