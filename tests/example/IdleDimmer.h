#pragma once

#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "kernel/SystemTimer.h"

/** Dims the front panel when nobody has touched a key for a while, and brightens it with the next key. */
class IdleDimmer : public Kernel::ComponentTask, public Kernel::SystemTimer, public Kernel::Singleton<IdleDimmer>
{
public:
    static constexpr Kernel::ComponentId componentId = 32;
    static constexpr int idleTimer = 1;
    static constexpr int idleMs = 30000;

    /** 0 (dark) to 15 (full). Any thread. */
    int getLevel() const { return level; }

    void onStop() override { stopTimer(idleTimer); }
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;

private:
    friend class Kernel::Singleton<IdleDimmer>;
    IdleDimmer();

    void brighten();
    void dim();

    std::atomic<int> level { 15 };
};
