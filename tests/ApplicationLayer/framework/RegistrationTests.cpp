#include "ApplicationLayer/framework/ApplicationTask.h"
#include "EngineApi/Pages.h"
#include "kernel/ComponentRegistration.h"
#include "support/KernelFixture.h"

#include <set>

using namespace Pubhead;

namespace
{

class RegistrationTest : public KernelFixture
{
protected:
    RegistrationTest()
    {
        for (const auto* each = Kernel::ComponentRegistration::head(); each != nullptr; each = each->next)
        {
            add(each->creator(), each->id);
            ids.push_back(each->id);
        }
    }

    std::vector<Kernel::ComponentId> ids;
};

const std::set<int> residentPages { mbMainMenu,  mbBTPhone,  mbBTAudio,  mbiPodAudio,
                                    mbiPodVideo, mbReariPod, mbUSBAudio, mbSirius };

} // namespace

/** Every page of the catalogue, and no other, reaches the handler of the application that owns it. */
TEST_F(RegistrationTest, RegistersEveryPageWithItsApplication)
{
    std::set<Kernel::ComponentId> owners;
    for (int page = 0; page < NUM_OF_PAGES; ++page)
    {
        SCOPED_TRACE(pageName(page));
        const auto* config = EngineApi::pageScheduleConfig(page);
        const auto handler = EngineApi::getHandler(page);
        ASSERT_EQ(handler != nullptr, config != nullptr);
        if (handler == nullptr)
            continue;
        owners.insert(config->ownerId);
        EXPECT_EQ(EngineApi::getOwnerId(page), config->ownerId);
        EXPECT_EQ(handler->getPage(), page);
        EXPECT_EQ(handler->isResident(), residentPages.contains(page));
        EXPECT_TRUE(handler->isAvailable());
        EXPECT_FALSE(handler->isRunning());
    }
    EXPECT_EQ(owners, std::set(ids.begin(), ids.end()));
    // A program with several pages answers to the one that its application adds last.
    EXPECT_EQ(EngineApi::getPageOfAppType(AppRadio), mbWB);
    EXPECT_EQ(EngineApi::getPageOfAppType(AppAuxIn), mbRearAV2);
}

TEST_F(RegistrationTest, PagesGoWithTheirApplications)
{
    engine().stop();
    engine().release();
    EXPECT_EQ(EngineApi::getHandler(mbFM), nullptr);
}
