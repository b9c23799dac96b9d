#pragma once

#include "kernel/SystemMessage.h"
#include "platform/base/Shared.h"
#include "platform/base/Threads.h"

#include <atomic>

namespace Kernel
{

/** Anything that a task group delivers messages to. */
class SystemTask : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<SystemTask>;

    /** A singleton holds a reference to itself, which ends with it. */
    ~SystemTask() override { resetReferenceCount(); }

    /** True: handle it now. False: it stays pending and is offered again on every pass. Group thread. */
    virtual bool acceptMessage(const SystemMessage&) { return true; }
    /** Group thread. */
    virtual void dispatchMessage(const SystemMessage& message) = 0;
    /** Once, on the message thread, right after the id was assigned. */
    virtual void initialize() = 0;
    /** After the group's thread has stopped. */
    virtual void onStop() = 0;
    /** Drops references to other components and buffers. */
    virtual void onRelease() = 0;

    ComponentId getId() const { return componentId; }
    /** Assigning the id runs `initialize`. */
    void assignId(ComponentId newId)
    {
        componentId = newId;
        initialize();
    }

    const juce::String& getGroupName() const { return owningGroup; }
    void setGroupName(const juce::String& name) { owningGroup = name; }

private:
    ComponentId componentId = noComponent;
    juce::String owningGroup;
};

/** Base of every manager. */
class ComponentTask : public SystemTask
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<ComponentTask>;

    void dispatchMessage(const SystemMessage& message) override
    {
        handleMessage(message.id, message.arg1, message.arg2, message.payload);
    }
    void initialize() override {}
    void onStop() override {}
    void onRelease() override {}

    /** Group thread. */
    virtual void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Payload& payload) = 0;
};

/** A component whose work is one long routine, run on its group's thread when it receives message 1. */
class SingalTask : public SystemTask
{
public:
    static constexpr juce::int32 runMessage = 1;

    /** Message 1 only: forgets an earlier stop request and runs the routine. */
    void dispatchMessage(const SystemMessage& message) override;
    void initialize() override {}
    void onStop() override {}
    void onRelease() override {}

    /** Asks the running routine to end. Any thread. */
    void requestStop();

    bool isIdle() const { return idle; }

protected:
    /** The routine polls the stop flag and waits on the wake-up event in between. */
    virtual void runTask(const SystemMessage& message) = 0;

    bool isStopRequested() const { return stop; }
    /** True when the wake-up event came before the time was over. */
    bool waitForWakeUp(int milliseconds) { return wakeUp.wait(milliseconds); }

private:
    Platform::Shared<bool> stop { true };
    std::atomic<bool> idle { false };
    Platform::Event wakeUp;
};

} // namespace Kernel
