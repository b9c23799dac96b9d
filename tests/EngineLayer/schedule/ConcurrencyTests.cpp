#include "support/StateFixture.h"

#include <numeric>
#include <thread>

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;

using ManagerConcurrencyTest = StateFixture;

// The state manager works while the applications ask for pages, the toolkit's thread looks for idle programs, others
// query, and one keeps changing the unit's state. Every request gets one final answer. For the thread sanitizer above
// all.
TEST_F(ManagerConcurrencyTest, QueriesAndRequestsFromEveryThread)
{
    constexpr int requestsEach = 60;
    enterNormalRun();
    int finals = 0;
    const auto requestCount = [this]
    {
        return std::accumulate(pages.begin(), pages.end(), 0,
                               [](int sum, const auto& each) { return sum + each.second->requests; });
    };
    const int before = requestCount();
    // Carries out what was ordered, and counts the final results.
    const auto work = [&]
    {
        run();
        answerAll();
        for (const auto& event : events())
            finals += event.ends_with(" = 1") || event.ends_with(" = 2") || event.ends_with(" = 4") ? 1 : 0;
    };

    std::atomic<bool> over { false };
    std::atomic<int> asking { 2 };
    std::atomic<int> inconsistent { 0 };
    std::vector<std::thread> threads;
    for (const auto& own : { std::vector { mbFM, mbUSBAudio, mbSetup }, std::vector { mbAM, mbRearAV1, mbMainMenu } })
        threads.emplace_back(
            [own, &asking]
            {
                for (int round = 0; round < requestsEach; ++round)
                {
                    const auto action = round % 4 == 3 ? AppAction::ToHide : AppAction::ToRun;
                    requestPageState(own[static_cast<std::size_t>(round) % own.size()], action, round % 2 == 0);
                    std::this_thread::yield();
                }
                --asking;
            });
    threads.emplace_back(
        [&over, &inconsistent, this]
        {
            while (!over)
            {
                const auto seen = applications.getSnapshot();
                for (const int page : { seen.normalSource, seen.frontShow, seen.playing })
                    inconsistent +=
                        page < 0 || page > NUM_OF_PAGES || (page != NUM_OF_PAGES && !getHandler(page)) ? 1 : 0;
                inconsistent += getSystemState() == kBooting || getSystemSubState() > kSwitch ? 1 : 0;
                for (const auto& [page, handler] : applications.getAllHandlers())
                    handler->getRunState();
                getISRReturnPage();
                getLastSourcePage();
            }
        });
    threads.emplace_back(
        [&over, this]
        {
            while (!over)
            {
                applications.expire(ApplicationManager::backgroundTimer);
                std::this_thread::yield();
            }
        });
    threads.emplace_back(
        [&over]
        {
            for (int round = 0; !over; ++round)
            {
                switchSystemState(round % 2 == 0 ? kISRMode : kNormalRun, kIdle);
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });

    while (asking > 0)
        work();
    over = true;
    for (auto& thread : threads)
        thread.join();
    work();
    enter(kNormalRun);
    // What comes in ISR mode may wait for the state after it.
    for (int round = 0; round < 3; ++round)
        work();

    EXPECT_EQ(inconsistent, 0);
    EXPECT_FALSE(isSystemBusy());
    EXPECT_EQ(getSystemState(), kNormalRun);
    EXPECT_EQ(finals, requestCount() - before);
}
