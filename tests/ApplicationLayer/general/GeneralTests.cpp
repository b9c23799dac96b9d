#include "ApplicationLayer/general/GeneralApplication.h"

#include "EngineApi/KeyCodes.h"
#include "EngineApi/Remote.h"
#include "EngineLayer/devices/DeviceStatusManager.h"
#include "doubles/LinesDouble.h"
#include "doubles/SystemDouble.h"
#include "support/ApplicationFixture.h"

using namespace ApplicationLayer;
using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

class GeneralTest : public ApplicationFixture
{
protected:
    GeneralTest()
    {
        Platform::doubles::LinesDouble::reset();
        Platform::doubles::SystemDouble::reset();
        add(DeviceStatusManager::getInstance(), Kernel::deviceStatusManagerId);
        add(&general, Kernel::generalApplicationId);
        for (const int program : { AppCamera, AppAntitheft, AppEQ })
            connect(program);
        takePosted();
    }

    void device(int kind, bool present)
    {
        setDeviceState(kind, present);
        run();
    }

    Platform::Bundle::Ptr show(int page)
    {
        return order(page, SwitchType::ToChange, { 1, 0, 0, 0 }, CommandLine::genCmdPageShow(page, false));
    }
    void hide(int page) { order(page, SwitchType::ToChange, { 2, 0, 0, 0 }, CommandLine::genCmdPageHide(page, mbFM)); }

    GeneralApplication& general = *new GeneralApplication;
};

} // namespace

/**
    The trigger input shows the camera, a key takes it away while the input stays on, the input's end changes nothing.
*/
TEST_F(GeneralTest, CameraFollowsTriggerAndKey)
{
    device(triggerInput, true);
    favouriteBar.shown = true;
    key(mbCamera, KEY_SHOWCAMERA);
    EXPECT_THAT(requests(), ElementsAre("mbCamera run auto", "mbCamera stop auto"));
    EXPECT_THAT(favouriteBar.messages, ElementsAre(std::array { static_cast<int>(Kernel::MSG_FAVOURITES_HIDE), 0, 0 }));
    device(triggerInput, false);
    key(mbCamera, KEY_MENU);
    EXPECT_THAT(requests(), IsEmpty());
    EXPECT_THAT(takeSent(), IsEmpty());

    // On and off before the application has looked: the camera stays off.
    setDeviceState(triggerInput, true);
    step();
    setDeviceState(triggerInput, false);
    run();
    EXPECT_FALSE(dynamic_cast<CameraHandler&>(*getHandler(mbCamera)).isCameraOn());
}

/** What covers the camera gives way after five seconds, unless the camera was taken away in between. */
TEST_F(GeneralTest, CameraComesBackWhileItIsOn)
{
    auto& timers = timersOf(mbCamera);
    key(mbCamera, KEY_INFOBAR_SWITCH_SPEAKER);
    EXPECT_FALSE(timers.isTimerRunning(CameraHandler::showTimer)); // it is off
    key(mbCamera, KEY_SHOWCAMERA);
    show(mbCamera);
    hide(mbCamera);
    EXPECT_EQ(timers.getTimerInterval(CameraHandler::showTimer), 5000);
    fire(timers, CameraHandler::showTimer);
    EXPECT_THAT(requests(), ElementsAre("mbCamera run auto"));

    hide(mbCamera);
    show(mbCamera);
    EXPECT_FALSE(timers.isTimerRunning(CameraHandler::showTimer));
    key(mbCamera, KEY_INFOBAR_SWITCH_SPEAKER);
    fire(timers, CameraHandler::showTimer);
    EXPECT_THAT(requests(), IsEmpty()); // it is in front

    hide(mbCamera);
    key(mbCamera, KEY_SHOWCAMERA);
    EXPECT_FALSE(timers.isTimerRunning(CameraHandler::showTimer));
    EXPECT_THAT(requests(), ElementsAre("mbCamera stop auto"));
    hide(mbCamera);
    fire(timers, CameraHandler::showTimer);
    EXPECT_THAT(requests(), IsEmpty());
}

TEST_F(GeneralTest, TheEqualiserStaysWhenItIsInFrontAgain)
{
    show(mbEQ);
    hide(mbEQ);
    order(mbEQ, SwitchType::ToChange, { 1, 0, 0, 0 }); // without a command line
    fire(timersOf(mbEQ), EQHandler::closeTimer);
    EXPECT_THAT(requests(), IsEmpty());
}

TEST_F(GeneralTest, OnlyTheAntitheftProgramUnlocks)
{
    EXPECT_EQ(show(mbAntitheft)->getInt("state", -1), getAntitheftValue());
    for (const int arg1 : { 0, 1, 2, 3 })
        fromProgram(AppAntitheft, RMSG_ANTITHEFT_EVENT, arg1);
    fromProgram(AppCamera, RMSG_ANTITHEFT_EVENT, 2);
    fromProgram(AppAntitheft, RMSG_GENERAL_UNUSED, 2);
    expectPosted(Kernel::systemStateManagerId, Kernel::MSG_SYS_ANTITHEFT_EXIT, 2, 0);
    expectPosted(Kernel::systemStateManagerId, Kernel::MSG_SYS_ANTITHEFT_EXIT, 1, 0);
    expectNothingPosted();
}
