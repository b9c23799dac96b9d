#include "support/StateFixture.h"
#include "support/WithMcu.h"

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;

namespace
{

class PowerOffTest : public WithMcu<StateFixture>
{
protected:
    PowerOffTest()
    {
        synchronise();
        enterNormalRun();
    }

    /** How often the microcontroller was told since the last call that the unit may go off. */
    int readyReports()
    {
        const auto said = mcu.converse([this] { run(); });
        return static_cast<int>(std::count_if(
            said.begin(), said.end(), [](const auto& frame) { return frame.command == EVENT_POWER_OFF_READY; }));
    }

    void powerOff() { send(Kernel::systemStateManagerId, Kernel::MSG_POWER_OFF); }
    void confirm(int page) { send(Kernel::systemStateManagerId, Kernel::MSG_POWER_OFF_CONFIRM, page); }
    void fireTimeOut()
    {
        states.expire(SystemStateManager::timerId);
        run();
    }
};

} // namespace

TEST_F(PowerOffTest, WithoutProgramsItIsReadyAtOnceAndOnce)
{
    powerOff();
    EXPECT_EQ(getSystemState(), kPowerOff);
    EXPECT_EQ(readyReports(), 1);
    powerOff();
    confirm(mbFM);
    fireTimeOut();
    EXPECT_EQ(readyReports(), 0);
    // It is final, and serves nobody.
    enter(kNormalRun);
    request(mbFM, AppAction::ToRun);
    EXPECT_EQ(getSystemState(), kPowerOff);
    EXPECT_EQ(events(), Events {});
}

TEST_F(PowerOffTest, WaitsForEveryConnectedProgramOnce)
{
    // The satellite page is the normal source too, and is told only once; USB plays nothing and is not asked.
    for (const int appType : { AppSirius, AppBluetooth, AppAuxIn, AppUSB })
        connect(appType);
    complete(mbSirius);
    complete(mbRearAV1);
    powerOff();
    EXPECT_EQ(events(), (Events { "mbSirius off", "mbBTPhone off", "mbRearAV1 off" }));
    EXPECT_EQ(states.getTimerInterval(SystemStateManager::timerId), 8000);
    confirm(mbBTPhone);
    confirm(mbBTPhone);
    confirm(mbUSBAudio);
    confirm(mbRearAV1);
    EXPECT_EQ(readyReports(), 0);
    confirm(mbSirius);
    EXPECT_EQ(readyReports(), 1);
    EXPECT_FALSE(states.isTimerRunning(SystemStateManager::timerId));
    confirm(mbSirius);
    fireTimeOut();
    EXPECT_EQ(readyReports(), 0);
}

// Power goes off in the middle of a switch: nothing waits for its pages, and its time-out, which may be on its way
// already, is not taken for that of the programs.
TEST_F(PowerOffTest, IsNotDelayedByASwitchNorHurriedByItsTimeOut)
{
    connect(AppSirius);
    request(mbFM, AppAction::ToRun);
    ASSERT_EQ(getSystemSubState(), kSwitch);
    Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_POWER_OFF, 0, 0);
    fireTimeOut();
    EXPECT_EQ(getSystemState(), kPowerOff);
    EXPECT_EQ(readyReports(), 0);
    send(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, mbAVOff, 1);
    confirm(mbSirius);
    EXPECT_EQ(readyReports(), 1);
}
