#pragma once

#include "EngineLayer/autotest/AutoTestFrame.h"
#include "kernel/ComponentIds.h"

namespace EngineLayer
{

class KeyManager;

/**
    What the test equipment of the factory asks for: keys, sources, volume, texts, the device id. Answers go to the
    auto-test session. `p` is the frame, whose bytes are meant by their place in it. The key manager's group thread.
*/
class AutoTestCommands
{
public:
    explicit AutoTestCommands(KeyManager& keyManager)
        : keys(keyManager)
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

    KeyManager& keys;
};

} // namespace EngineLayer
