#include "EngineApi/Settings.h"
#include "EngineLayer/CATestSessionManager.h"
#include "support/Golden.h"
#include "support/KeyFixture.h"

using namespace EngineApi;
using namespace EngineLayer;

namespace
{

/** The key manager and the session, with the test equipment behind the microcontroller. */
class FactoryTest : public KeyFixture
{
protected:
    FactoryTest() { Provided<AutoTestSession>::set(CATestSessionManager::getInstance()); }
    ~FactoryTest() override
    {
        CATestSessionManager::getInstance()->stop();
        Provided<AutoTestSession>::set(&session);
    }

    /** A command, and everything that the unit sends until the next acknowledgement is due. */
    void command(const char* what, const McuLink::Bytes& parameters)
    {
        transcript << "# " << what << "\n";
        Platform::doubles::SystemDouble::advanceTicks(1000);
        autoTest(parameters);
        note("-> ", lastFrame);
        answerAll();
    }

    /** The equipment takes the unit's next frame and answers with this. */
    void takes(std::uint8_t acknowledgement)
    {
        ASSERT_TRUE(eventually(
            [this]
            {
                for (const auto& frame : mcu.converse([this] { run(); }))
                    said.push_back(frame);
                return std::any_of(said.begin(), said.end(),
                                   [](const auto& frame) { return frame.command == EVENT_AUTOTEST_INFO; });
            }));
        for (const auto& frame : std::exchange(said, {}))
            note(frame.command == EVENT_AUTOTEST_INFO ? "<- " : "   mcu command " + juce::String(frame.command) + ": ",
                 frame.data);
        autoTest({ 0x83, acknowledgement });
        note("-> ", lastFrame);
    }

    void note(const juce::String& direction, const McuLink::Bytes& bytes)
    {
        transcript << direction << Platform::hexPairs(bytes.data(), static_cast<int>(bytes.size())) << "\n";
    }

    juce::String transcript;
    std::vector<McuLink::Frame> said;
};

} // namespace

// A unit on the factory line: test mode, volume, keys, sources, a text, the device id, and out again.
TEST_F(FactoryTest, FromTestModeToTheDeviceId)
{
    constexpr std::uint8_t ok = 0xFF, again = 0xFC;
    command("enter test mode", { 0x82, 1 });
    takes(ok);
    takes(again);
    takes(ok);
    command("volume 20", { 0, 3, 0, 20 });
    takes(ok);
    command("key 13, louder", { 0, 0, 13, 0 });
    takes(ok);
    command("key 5, which there is not", { 0, 0, 5, 0 });
    takes(ok);
    command("source FM", { 0, 1, 0, 0 });
    takes(ok);
    command("device states", { 0, 2 });
    takes(ok);
    command("power off", { 0, 0, 14, 1 });
    takes(ok);
    command("power on", { 0, 0, 14, 0 });
    takes(ok);
    takes(ok);
    EngineApi::setSettingString(1031, "V2.4", false, Pubhead::AppUnknown);
    command("text 0", { 7, 0 });
    takes(ok);
    command("device id", { 0, 4, 9, 'A', 'B', 'C', '1', '2', '3', '4', '5', '6' });
    takes(ok);
    keys.timerCallback();
    fromMcu(EVENT_GET_DEVICE_ID, { 0x12, 0x34, 0x56 });
    command("leave test mode", { 0x82, 0 });
    takes(ok);
    expectGolden("EngineLayer/golden/factory-test.txt", transcript);
}
