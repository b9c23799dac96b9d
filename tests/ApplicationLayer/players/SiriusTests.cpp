#include "ApplicationLayer/players/SiriusApplication.h"

#include "EngineApi/KeyCodes.h"
#include "support/ApplicationFixture.h"

using namespace ApplicationLayer;
using namespace EngineApi;
using namespace Pubhead;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

class SiriusTest : public ApplicationFixture
{
protected:
    SiriusTest()
    {
        add(new SiriusApplication, Kernel::siriusApplicationId);
        takePosted();
    }
};

} // namespace

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

    favouriteBar.shown = true;
    favouriteBar.index = 6;
    fromProgram(AppSirius, RMSG_SXM_EVENT, 3, 12);
    fromProgram(AppSirius, RMSG_SXM_EVENT, 4);
    EXPECT_EQ(favouriteBar.count, 12);
    EXPECT_EQ(favouriteBar.refreshes, 1);
    EXPECT_THAT(favouriteBar.messages,
                ElementsAre(std::array { static_cast<int>(Kernel::MSG_FAVOURITES_SELECT), 6, 0 }));

    fromProgram(AppSirius, RMSG_SXM_EVENT, 5);
    expectPosted(Kernel::deviceStatusManagerId, Kernel::MSG_POWER_OFF_CONFIRM, mbSirius, 0);
}
