#include "ApplicationLayer/SiriusApplication.h"

#include "EngineApi/KeyCodes.h"
#include "support/ApplicationFixture.h"

using namespace ApplicationLayer;
using namespace EngineApi;
using namespace Pubhead;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

constexpr const char* backPath = "/programs/satellite-background";

class SiriusTest : public ApplicationFixture
{
protected:
    SiriusTest()
    {
        Platform::Configuration::get().backgroundPrograms = { { mbSirius, backPath } };
        add(new SiriusApplication, Kernel::siriusApplicationId);
        takePosted();
    }
    ~SiriusTest() override { Platform::Configuration::get() = {}; }
};

} // namespace

TEST_F(SiriusTest, ServesItsProgram)
{
    Platform::doubles::ProcessDouble::takeLaunches();
    send(Kernel::siriusApplicationId, Kernel::MSG_SYS_READY);
    const auto launches = Platform::doubles::ProcessDouble::takeLaunches();
    ASSERT_EQ(launches.size(), 1u);
    EXPECT_EQ(launches[0].path, backPath);

    connect(AppSirius);
    takePosted();
    send(Kernel::siriusApplicationId, Kernel::MSG_FACTORY_RESET);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppSirius, RMSG_FACTORY_RESET, AppSirius }));

    // Each change of the tuner's presence, and only that, is a change of the unit's devices.
    for (const auto& [state, changes] : { std::pair(0, 0u), std::pair(1, 1u), std::pair(2, 0u), std::pair(0, 1u) })
    {
        fromProgram(AppSirius, RMSG_SXM_EVENT, 0, state);
        const auto posted = takePosted();
        EXPECT_EQ(posted.size(), changes) << state;
        for (const auto& each : posted)
            EXPECT_EQ(each.receiver, Kernel::deviceStatusManagerId);
    }
    fromProgram(AppSirius, RMSG_SXM_EVENT, 5);
    expectPosted(Kernel::deviceStatusManagerId, Kernel::MSG_POWER_OFF_CONFIRM, mbSirius, 0);
    fromProgram(AppSirius, RMSG_SXM_EVENT, 99);
    expectNothingPosted();
}

TEST_F(SiriusTest, PlaysAndShowsFavourites)
{
    const auto enter = []() { return Platform::AppCommandLine::genCmdSourceEnter(mbSirius, false, true); };
    connect(AppSirius);
    order(mbSirius, SwitchType::ToRun, { 1, 1, 1, 1 }, enter());
    key(mbSirius, KEY_ROTARY_ENTER, 4);
    key(mbSirius, KEY_NEXT, 5);
    EXPECT_THAT(requests(), IsEmpty()) << "it is in front already";
    EXPECT_THAT(takeSent(), IsEmpty());
    auto commandLine = enter();
    order(mbSirius, SwitchType::ToChange, { 1, 1, 1, 1 }, commandLine);
    ASSERT_NE(commandLine->getExtraData(), nullptr);
    EXPECT_EQ(commandLine->getExtraData()->getInt("Favourite", 0), 4);

    favoriteBar.shown = true;
    favoriteBar.index = 6;
    fromProgram(AppSirius, RMSG_SXM_EVENT, 3, 12);
    fromProgram(AppSirius, RMSG_SXM_EVENT, 4);
    EXPECT_EQ(favoriteBar.count, 12);
    EXPECT_EQ(favoriteBar.refreshes, 1);
    EXPECT_THAT(favoriteBar.messages, ElementsAre(std::array { static_cast<int>(Kernel::MSG_FAVORITES_SELECT), 6, 0 }));
}
