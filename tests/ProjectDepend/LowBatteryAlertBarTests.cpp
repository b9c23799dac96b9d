#include "ProjectDepend/LowBatteryAlertBar.h"

#include "doubles/OverlayDouble.h"
#include "doubles/SoundDouble.h"
#include "kernel/MessageIds.h"
#include "platform/base/System.h"
#include "platform/config/Configuration.h"
#include "platform/config/Resources.h"
#include "support/Eventually.h"
#include "support/Pump.h"

#include <gmock/gmock.h>
#include <thread>

using namespace Platform;
using testing::ElementsAre;

namespace
{

class LowBatteryAlertBarTest : public testing::Test
{
protected:
    LowBatteryAlertBarTest()
    {
        CVXResPathManager::getInstance()->addResPath(HEADUNIT_BUILD_DIR "/resources/MainRes.spp", {});
        doubles::SoundDouble::takeCalls();
        bar = std::make_unique<Bar::LowBatteryAlertBar>();
    }
    ~LowBatteryAlertBarTest() override
    {
        bar.reset();
        ResourceAutoDelete();
    }

    void alert(int on) { bar->postMessage(Kernel::MSG_LOW_BATTERY_ALERT, on, 0, nullptr); }

    void expectSound()
    {
        EXPECT_TRUE(bar->isBarShown());
        EXPECT_TRUE(bar->isVisible());
        std::vector<juce::String> played;
        EXPECT_TRUE(eventually(
            [&]
            {
                for (const auto& each : doubles::SoundDouble::takeCalls())
                    played.push_back(each);
                return !played.empty();
            }));
        EXPECT_THAT(played, ElementsAre(AppConfig::getProfilePath() + "alert_49.wav"));
        EXPECT_EQ(getWaveOutVolume(), 0xEEEEEEEE);
    }
    static void expectSilence()
    {
        EXPECT_THAT(doubles::SoundDouble::takeCalls(), ElementsAre(""));
        EXPECT_EQ(getWaveOutVolume(), 0xFFFFFFFF);
    }

    std::unique_ptr<Bar::LowBatteryAlertBar> bar;
};

} // namespace

TEST_F(LowBatteryAlertBarTest, SoundsWhileItIsShownAndSaysEverythingOnce)
{
    alert(0);
    bar->postMessage(Kernel::MSG_VOLUME_SHOW, 1, 0, nullptr);
    EXPECT_FALSE(bar->isBarShown());
    alert(1);
    alert(1);
    expectSound();
    alert(2); // whatever is not 1 ends it
    EXPECT_FALSE(bar->isVisible());
    expectSilence();
    alert(0);
    EXPECT_THAT(doubles::SoundDouble::takeCalls(), ElementsAre());

    std::thread([this] { alert(1); }).join();
    EXPECT_FALSE(bar->isBarShown());
    pump();
    expectSound();
    doubles::OverlayDouble::touch(0x1234);
    pump();
    EXPECT_FALSE(bar->isBarShown());
    expectSilence();
    EXPECT_EQ(bar->getName(), "LowBatteryAlertBar");

    alert(1);
    expectSound();
    bar.reset();
    expectSilence();
    EXPECT_EQ(doubles::OverlayDouble::touch(0x1234), 0) << "nobody watches the touches any more";
}

/** The sound output hangs over the end of an alert: when it lets go, the next alert is heard, and ends. */
TEST_F(LowBatteryAlertBarTest, AnAlertWhoseSoundHangsDoesNotSilenceTheNextOne)
{
    doubles::SoundDouble::hold(true);
    alert(1);
    alert(0);
    alert(1);
    doubles::SoundDouble::hold(false);
    expectSound();
    alert(0);
    EXPECT_TRUE(doubles::SoundDouble::getPlaying().isEmpty());
    EXPECT_EQ(getWaveOutVolume(), 0xFFFFFFFF);
}
