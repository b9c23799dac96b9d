#pragma once

#include "EngineLayer/autotest/AutoTestCommands.h"
#include "EngineLayer/keys/KeyTable.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "platform/base/BoundedQueue.h"
#include "platform/base/Shared.h"
#include "platform/base/Time.h"

#include <span>

namespace EngineLayer
{

/**
    Turns the keys of the microcontroller, the wired remote and the factory test into actions. Also keeps the unit's
    device id and takes the commands of the factory test. Handlers run on the group thread.
*/
class KeyManager : public Kernel::ComponentTask,
                   public AutoTestKeys,
                   public Kernel::Singleton<KeyManager>,
                   public Platform::Timer
{
public:
    /** The microcontroller's events wait while a switch of pages or states is under way. */
    bool acceptMessage(const Kernel::SystemMessage& message) override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;
    void onStop() override { stopTimer(); }

    /** By the power key that was pressed last. Any thread. */
    bool isPoweredOn() const { return powerOn; }

    void handleKey(int origin, int value) override;
    /** EngineApi::keyName. */
    static juce::String getKeyName(int value);

    void setDeviceId(const DeviceId& id) override;
    /** Time to read the device id back. Message thread. */
    void timerCallback() override;

private:
    friend class Kernel::Singleton<KeyManager>;
    KeyManager();

    // To itself: the next of the waiting keys has its turn.
    static constexpr juce::int32 msgNextHostKey = 1;
    static constexpr juce::int32 msgNextRemoteKey = 2;

    struct KeyEvent
    {
        int origin;
        int value;
    };
    /** When keys come faster than they are acted on, the newest are kept: they are what the user wants now. */
    using KeyQueue = Platform::BoundedQueue<KeyEvent, 16>;

    void hostEvent(int command, const Kernel::Payload& payload);
    void enqueue(KeyQueue& queue, KeyEvent key, juce::int32 turn);
    void takeTurn(KeyQueue& queue, juce::int32 turn);
    void compareDeviceId(std::span<const std::uint8_t> answer) const;

    bool isRepeat(int value) const;
    KeySituation situation() const;
    void carryOut(const KeyActions& actions);
    void act(KeyStep step);
    void act(const ProgramKey& action);
    void act(const PageKey& action);
    void act(const FavouriteMessage& action);
    void act(const SelectFavourite& action);
    void act(const PowerSwitch& action);
    void act(const PowerRequest& action);
    void act(const VolumeStep& action);
    void act(const ShowPage& action);
    void act(const KeyLog& action);

    KeyQueue hostKeys;
    KeyQueue remoteKeys;
    juce::uint32 lastKeyTime = 0; ///< ms
    int lastKey = 0;
    int favourite = 1; ///< 1 to 16, the one that keys act on
    bool returnOnNextKey = false;
    Platform::Shared<bool> powerOn { true };
    DeviceId deviceId {};
    bool shortFrameReported = false;
    AutoTestCommands autoTest { *this };
};

} // namespace EngineLayer
