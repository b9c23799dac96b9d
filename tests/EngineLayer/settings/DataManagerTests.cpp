#include "EngineLayer/settings/DataManager.h"

#include "kernel/MessageIds.h"
#include "platform/settings/SetupIndex.h"
#include "support/KernelFixture.h"
#include "support/LogCapture.h"
#include "support/ScratchUnit.h"

#include <gmock/gmock.h>
#include <thread>

using namespace EngineApi;
using namespace EngineLayer;

namespace
{

constexpr int numberSetting = Platform::bluetoothSetting, textSetting = Platform::zone2NameSetting;

class Listener : public SettingDataChangeListener
{
public:
    void onSettingChanged(int index, int origin) override
    {
        heard.emplace_back(index, origin);
        if (then)
            then();
    }
    bool acceptsKey(int index, int) override { return index != refused; }

    int refused = -1;
    std::function<void()> then;
    std::vector<std::pair<int, int>> heard;
};

/** On the real store in a folder of its own. */
class DataManagerTest : public KernelFixture
{
protected:
    DataManagerTest()
    {
        ScratchUnit::emptySettings("7 = 1\n284 = \"Zone 2\"\n");
        add(DataManager::getInstance(), Kernel::dataManagerId);
        EXPECT_TRUE(manager().loadSystemFile());
    }

    static DataManager& manager() { return *DataManager::getInstance(); }

private:
    const ScratchUnit unit;
};

} // namespace

TEST_F(DataManagerTest, ChangesAreStoredAtOnceAndToldLaterInOrder)
{
    Listener first, second;
    second.refused = textSetting;
    addSettingListener(&first);
    addSettingListener(&second);

    setSettingInt(numberSetting, 1, true, Pubhead::AppSetup); // stored already
    setSettingInt(numberSetting, 2, true, Pubhead::AppSetup);
    setSettingString(textSetting, "Zone 2", true, Pubhead::AppSetup); // stored already
    setSettingString(textSetting, "Cockpit", true, Pubhead::AppUnknown);
    setSettingInt(numberSetting, 3, true, Pubhead::AppMain);
    setSettingInt(numberSetting, 4, false, Pubhead::AppMain); // nobody is told
    EXPECT_EQ(getSettingInt(numberSetting), 4);
    EXPECT_EQ(getSettingString(textSetting), "Cockpit");
    EXPECT_TRUE(first.heard.empty());

    run();
    using Heard = std::vector<std::pair<int, int>>;
    EXPECT_EQ(first.heard, (Heard { { numberSetting, Pubhead::AppSetup },
                                    { textSetting, Pubhead::AppUnknown },
                                    { numberSetting, Pubhead::AppMain } }));
    EXPECT_EQ(second.heard, (Heard { { numberSetting, Pubhead::AppSetup }, { numberSetting, Pubhead::AppMain } }));
}

/**
    A program moves a slider faster than the unit follows: few announcements wait, the last of them after the last
    value.
*/
TEST_F(DataManagerTest, AFloodOfChangesIsToldWithItsNewestValue)
{
    LogCapture log;
    Listener listener;
    manager().listeners.add(&listener);
    listener.then = [&] { EXPECT_EQ(manager().getInt(numberSetting), 2000); };
    for (int flood = 0; flood < 2; ++flood)
    {
        listener.heard.clear();
        for (int value = 1000; value <= 2000; ++value)
            manager().setInt(numberSetting, value, true, Pubhead::AppSetup);
        manager().setString(textSetting, flood == 0 ? "Bow" : "Stern", true, Pubhead::AppSetup);
        run();
        EXPECT_EQ(listener.heard.size(), 1u + EngineLayer::WaitingChanges::most);
        EXPECT_EQ(listener.heard.back().first, textSetting);
    }
    EXPECT_EQ(LogCapture::take().size(), 1u);
}

TEST_F(DataManagerTest, AListenerMayRemoveItselfAndOthers)
{
    Listener first, second, third;
    for (auto* listener : { &first, &second, &third })
        manager().listeners.add(listener);
    first.then = [&]
    {
        manager().listeners.remove(&first);
        manager().listeners.remove(&second);
        manager().listeners.add(&first);
    };
    manager().setInt(numberSetting, 5, true, Pubhead::AppUnknown);
    run();
    EXPECT_EQ(first.heard.size(), 1u);
    EXPECT_TRUE(second.heard.empty());
    EXPECT_EQ(third.heard.size(), 1u);
}

// An owner on another thread removes its listener and deletes it while the data manager is inside the call.
TEST_F(DataManagerTest, RemovingAListenerWaitsForItsRunningCall)
{
    Listener listener;
    manager().listeners.add(&listener);
    juce::WaitableEvent inside, removed;
    std::thread owner(
        [&]
        {
            inside.wait();
            manager().listeners.remove(&listener);
            removed.signal();
        });
    bool removedDuringCall = false;
    listener.then = [&]
    {
        inside.signal();
        removedDuringCall = removed.wait(50);
    };
    manager().setInt(numberSetting, 6, true, Pubhead::AppUnknown);
    run();
    owner.join();
    EXPECT_FALSE(removedDuringCall);
    manager().setInt(numberSetting, 7, true, Pubhead::AppUnknown);
    run();
    EXPECT_EQ(listener.heard.size(), 1u);
}

TEST_F(DataManagerTest, AResetTellsTheOthersAndIsRemembered)
{
    manager().setInt(numberSetting, 9, false, Pubhead::AppUnknown);
    send(Kernel::dataManagerId, Kernel::MSG_FACTORY_RESET);
    expectPosted(Kernel::bluetoothApplicationId, Kernel::MSG_FACTORY_RESET, 0, 0);
    expectPosted(8, Kernel::MSG_FACTORY_RESET, 0, 0);
    EXPECT_TRUE(manager().isResetInProgress());
    EXPECT_FALSE(manager().isFullReset());
    EXPECT_TRUE(manager().loadSystemFile());

    send(Kernel::dataManagerId, Kernel::MSG_FULL_RESET);
    expectPosted(Kernel::bluetoothApplicationId, Kernel::MSG_FACTORY_RESET, 0, 0);
    expectPosted(8, Kernel::MSG_FACTORY_RESET, 0, 0);
    expectNothingPosted();
    EXPECT_TRUE(manager().isFullReset() && manager().isResetInProgress());
}
