#include "ProjectDepend/VolumeBar.h"

#include "EngineApi/Provided.h"
#include "doubles/OverlayDouble.h"
#include "kernel/MessageIds.h"
#include "platform/config/Resources.h"
#include "support/ErrorLog.h"
#include "support/FakeAudio.h"
#include "support/Pump.h"
#include "support/ScratchUnit.h"

#include <gmock/gmock.h>
#include <thread>

using namespace Platform;
using testing::ElementsAre;

namespace
{

constexpr int mainZone = 1;
constexpr int zone2 = 2;
constexpr int mute = 3;
constexpr const char* pack = HEADUNIT_BUILD_DIR "/resources/MainRes.spp";

class VolumeBarTest : public testing::Test
{
protected:
    VolumeBarTest()
    {
        ScratchUnit::emptySettings("284 = \"Poop deck\"\n");
        EngineApi::Provided<Dsp::ChipManager>::set(&audio);
        CVXResPathManager::getInstance()->clear();
        EXPECT_TRUE(CVXResPathManager::getInstance()->addResPath(pack, {}));
        bar = std::make_unique<Bar::VolumeBar>();
    }
    ~VolumeBarTest() override
    {
        bar.reset();
        EngineApi::Provided<Dsp::ChipManager>::set(nullptr);
        ResourceAutoDelete();
    }

    void volume(int kind, int value) { bar->postMessage(Kernel::MSG_VOLUME_SHOW, kind, value, nullptr); }
    void close() { bar->postMessage(EngineApi::MSG_BAR_CLOSE, 0, 0, nullptr); }
    void touchOutside()
    {
        doubles::OverlayDouble::touch(0x1234);
        pump();
    }

    template <typename Control>
    Control& find(const char* name)
    {
        return *CVXRelationHelper::findComponent<Control>(bar.get(), name);
    }

    /** What a person sees: the picture of the control that is visible, "" while the bar is hidden. */
    juce::String seen()
    {
        juce::StringArray pictures;
        if (auto& image = find<CVXImageView>("Img_MainVolume"); image.isVisible())
            pictures.add(image.getPicture().getName());
        for (const auto* name : { "Btn_Zone2", "Btn_Mute" })
            if (auto& button = find<CVXButton>(name); button.isVisible())
                pictures.add(button.getPicture().getName());
        EXPECT_EQ(bar->isVisible(), bar->isShown());
        return bar->isShown() ? pictures.joinIntoString("+") : juce::String();
    }

    ErrorLog log;
    FakeAudio audio;
    std::unique_ptr<Bar::VolumeBar> bar;
};

} // namespace

/** An evening on board: volumes of both zones, a mute with changes meanwhile, touches; the volume keys follow. */
TEST_F(VolumeBarTest, ShowsWhatChangedForItsTimeAndTheMuteForAsLongAsItLasts)
{
    const auto fire = [this] { bar->timerCallback(); };
    const auto say = [this](int kind, int value) { return [this, kind, value] { volume(kind, value); }; };
    const juce::String mutePicture = "volumebar\\mute.png";
    const struct
    {
        const char* story;
        std::function<void()> action;
        juce::String seen;
        int timerMs; ///< 0 when it does not run
        std::vector<std::string> sound;
    } steps[] {
        { "main volume", say(mainZone, 27), "volumebar\\MainVolume\\ORB600 Vol27.png", 2000, {} },
        { "up again", say(mainZone, 50), "volumebar\\MainVolume\\ORB600 Vol50.png", 2000, {} },
        { "its time is over", fire, "", 0, { "zone 1" } },
        { "zone 2", say(zone2, 0), "volumebar\\Zone2Volume\\ZVOL0.png", 2000, { "zone 2" } },
        { "touch outside", [this] { touchOutside(); }, "", 0, { "zone 1" } },
        { "touch while hidden", [this] { touchOutside(); }, "", 0, {} },
        { "mute", say(mute, 1), mutePicture, 2000, {} },
        { "muted still", fire, mutePicture, 0, {} },
        { "close is not for a mute", [this] { close(); }, mutePicture, 0, {} },
        { "volume while muted", say(zone2, 3), "volumebar\\Zone2Volume\\ZVOL3.png", 2000, { "zone 2" } },
        { "back to the mute", fire, mutePicture, 0, {} },
        { "unmute", say(mute, 0), mutePicture, 100, {} },
        { "gone", fire, "", 0, { "zone 1" } },
        { "shown and closed", [&] { volume(mainZone, 1), close(); }, "", 0, { "zone 1" } },
        { "an unknown kind", say(7, 1), "", 0, {} },
        { "a foreign message", [this] { bar->postMessage(4711, 1, 1, nullptr); }, "", 0, {} },
    };
    for (const auto& step : steps)
    {
        SCOPED_TRACE(step.story);
        step.action();
        EXPECT_EQ(seen(), step.seen);
        EXPECT_EQ(bar->isTimerRunning() ? bar->getTimerInterval() : 0, step.timerMs);
        EXPECT_EQ(std::exchange(audio.calls, {}), step.sound);
    }
    EXPECT_EQ(find<CVXButton>("Btn_Zone2").getText(1), "Poop deck");
    EXPECT_TRUE(log.take().empty());
}

TEST_F(VolumeBarTest, OtherThreadsAreHeardOnTheMessageThreadOnly)
{
    std::thread([this] { volume(mainZone, 9); }).join();
    EXPECT_FALSE(bar->isShown());
    pump();
    EXPECT_TRUE(bar->isShown());

    std::thread([this] { volume(mainZone, 10), bar->updateImages(3); }).join();
    bar.reset();
    pump(); // What was on the way to the bar is lost with it.
}

TEST_F(VolumeBarTest, ANewPageInFrontGetsItsPicturesAndAMissingOneIsReportedOnce)
{
    volume(mainZone, 20);
    auto& image = find<CVXImageView>("Img_MainVolume");
    const auto update = [this]
    {
        bar->updateImages(1);
        pump();
    };
    CVXResPathManager::getInstance()->clear();
    update();
    EXPECT_FALSE(image.getPicture().isLoaded());
    update();
    CVXResPathManager::getInstance()->addResPath(pack, {});
    update();
    EXPECT_TRUE(image.getPicture().isLoaded());
    EXPECT_EQ(log.count("no picture volumebar\\MainVolume\\ORB600 Vol20.png"), 1);

    log.take();
    for (const int value : { INT32_MIN, 51, INT32_MIN, 51 })
        volume(mainZone, value);
    EXPECT_TRUE(bar->isShown());
    EXPECT_EQ(log.take().size(), 2u);
    // A sender gone mad does not fill the log.
    for (int value = 1000; value < 1200; ++value)
        volume(mainZone, value);
    EXPECT_LT(log.take().size(), 70u);
}

TEST_F(VolumeBarTest, WithoutAnythingAroundItKeepsItsState)
{
    bar.reset();
    CVXResPathManager::getInstance()->clear();
    EngineApi::Provided<Dsp::ChipManager>::set(nullptr);
    bar = std::make_unique<Bar::VolumeBar>();
    for (const int kind : { mainZone, zone2, mute })
        volume(kind, 1);
    EXPECT_TRUE(bar->isShown());
    bar->timerCallback();
    bar->updateImages(2);
    pump();
    EXPECT_TRUE(bar->isShown());
    volume(mute, 0);
    bar->timerCallback();
    EXPECT_FALSE(bar->isShown());
}
