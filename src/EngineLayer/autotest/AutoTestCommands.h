#pragma once

#include "EngineLayer/autotest/AutoTestFrame.h"
#include "kernel/ComponentIds.h"

#include <array>

namespace EngineLayer
{

/** Packed BCD, two digits a byte. */
using DeviceId = std::array<std::uint8_t, 3>;

/** What the test equipment may do to the keys. Group thread. */
class AutoTestKeys
{
public:
    virtual ~AutoTestKeys() = default;
    /** Acts on a key at once. `origin` is an EngineApi::KeyOrigin or the microcontroller's own. */
    virtual void handleKey(int origin, int value) = 0;
    /** Keeps the id, sends it to the microcontroller and reads it back 300 ms later. */
    virtual void setDeviceId(const DeviceId& id) = 0;
};

/**
    What the test equipment of the factory asks for: keys, sources, volume, texts, the device id. Answers go to the
    auto-test session. `p` is the frame, whose bytes are meant by their place in it. The key manager's group thread.
*/
class AutoTestCommands
{
public:
    explicit AutoTestCommands(AutoTestKeys& unitKeys)
        : keys(unitKeys)
    {
    }

    void handle(const AutoTestFrame::Request& p);

private:
    using Request = AutoTestFrame::Request;

    static void switchTestMode(const Request& p);
    void control(const Request& p);
    void pressKey(const Request& p);
    /** False for an item that is no key. */
    bool injectKey(int item, int detail);
    static void selectSource(int type, int number);
    static void setVolume(const Request& p);
    void storeDeviceId(const Request& p);
    static void passToApplication(Kernel::ComponentId application, const Request& p);
    static void openSetup(const Request& p);
    static void answerText(int item);

    AutoTestKeys& keys;
};

} // namespace EngineLayer
