#include "bench/program/PageLayout.h"
#include "bench/program/ProgramModel.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"
#include "support/ScratchUnit.h"

#include <gmock/gmock.h>

using namespace BenchProgram;
using namespace Platform;
using namespace Pubhead;
using testing::ElementsAre;

namespace
{

/** Screen and engine in one: what is seen, what was said, and the settings, which the engine stores at once. */
class Around : public Outside
{
public:
    void post(int what, int arg1, int arg2, Bundle::Ptr bundle) override
    {
        if (what == RMSG_SETTING_CHANGED && arg2 != 0)
            VX_SetSetupValueInt(arg1, RemoteObjFormat::getInt(bundle));
        else if (what == RMSG_SETTING_CHANGED)
            VX_SetSetupValueString(arg1, RemoteObjFormat::getString(bundle));
        else
            said.push_back(what);
    }
    void postToWindow(int message, int, int) override { said.push_back(message); }
    void report(const char*, const juce::String&) override {}
    void reportPage(const char*, int) override {}
    void show(int page) override { onScreen = page; }
    void clear() override { onScreen = NUM_OF_PAGES; }
    void showSource(int) override {}
    void contentChanged() override {}
    void contentChangesSoon() override {}
    void awaitEngine(bool) override {}
    void quit() override {}

    int onScreen = NUM_OF_PAGES;
    std::vector<int> said;
};

class ProgramModelTest : public testing::Test
{
protected:
    static void hear(ProgramModel& model, int what, int arg1 = 0)
    {
        RemoteMessage message;
        message.what = what;
        message.arg1 = arg1;
        model.handle(message);
    }

    /** Touches what is labelled so; of a row or a level, its upper or lower end. */
    static bool touch(ProgramModel& model, int page, const juce::String& label, bool down = false)
    {
        const auto content = model.content(page);
        for (const auto& button : content.buttons)
            if (button.label == label)
                return model.touch(page, button.id), true;
        for (const auto& row : content.rows)
            if (row.label == label && (!down || row.down != 0))
                return model.touch(page, down ? row.down : row.id), true;
        for (const auto& level : content.levels)
            if (level.label == label && !level.fixed)
                return model.touch(page, down ? level.down : level.up), true;
        return false;
    }
    static juce::String valueOf(const ProgramModel& model, int page, const juce::String& label)
    {
        for (const auto& row : model.content(page).rows)
            if (row.label == label)
                return row.value;
        return "no such row";
    }

    ScratchUnit scratch;
    Around around;
};

} // namespace

/** The engine tells the old page to hide before it lets the new one show: the old one is what is seen meanwhile. */
TEST_F(ProgramModelTest, APageIsSeenUntilAnotherCoversIt)
{
    ProgramModel radio(AppRadio, {}, around);
    const struct
    {
        int what, page, seen;
        std::vector<int> answer;
    } steps[] { { RMSG_PAGE_SHOW, mbFM, mbFM, { RMSG_PAGE_SHOW_READY } },
                { RMSG_PAGE_HIDE, mbFM, mbFM, { RMSG_PAGE_HIDE_READY } },
                { RMSG_PAGE_COVERED, mbFM, NUM_OF_PAGES, {} },
                { RMSG_PAGE_SHOW, mbFM, mbFM, { RMSG_PAGE_SHOW_READY } },
                { RMSG_PAGE_HIDE, mbFM, mbFM, { RMSG_PAGE_HIDE_READY } },
                { RMSG_PAGE_SHOW, mbAM, mbAM, { RMSG_PAGE_SHOW_READY } },
                { RMSG_PAGE_COVERED, mbFM, mbAM, {} }, // comes late
                { RMSG_PAGE_COVERED, mbAM, NUM_OF_PAGES, {} },
                { RMSG_PAGE_SHOW, mbAM, mbAM, { RMSG_PAGE_SHOW_READY } },
                { RMSG_PAGE_HIDE, mbAM, mbAM, { RMSG_PAGE_HIDE_READY } },
                { RMSG_ENGINE_STARTED, 0, NUM_OF_PAGES, { RMSG_APP_HELLO } } };
    for (const auto& step : steps)
    {
        hear(radio, step.what, step.page);
        EXPECT_EQ(around.onScreen, step.seen) << step.what << " " << step.page;
        EXPECT_EQ(std::exchange(around.said, {}), step.answer) << step.what << " " << step.page;
    }
}

TEST_F(ProgramModelTest, SettingsAreSteppedBothWaysInWords)
{
    ScratchUnit::emptySettings("279 = 6\n280 = 5\n281 = 0\n19 = \"AUX\"\n");
    ProgramModel setup(AppSetup, {}, around);
    EXPECT_FALSE(touch(setup, mbSetup, "Balance")) << "it is behind another tab";
    ASSERT_TRUE(touch(setup, mbSetup, "Sound"));
    EXPECT_EQ(valueOf(setup, mbSetup, "Fader"), "centre");
    EXPECT_EQ(valueOf(setup, mbSetup, "Balance"), "left 1");
    EXPECT_TRUE(touch(setup, mbSetup, "Balance", true));
    EXPECT_EQ(valueOf(setup, mbSetup, "Balance"), "left 2");
    for (int i = 0; i < 20; ++i)
        touch(setup, mbSetup, "Balance");
    EXPECT_EQ(valueOf(setup, mbSetup, "Balance"), "right 6") << "the end is not the beginning";

    touch(setup, mbSetup, "Zones, light");
    EXPECT_FALSE(touch(setup, mbSetup, "Zone 2", true)) << "what is on or off is switched by a touch";
    for (const auto* state : { "On", "Off" })
    {
        touch(setup, mbSetup, "Zone 2");
        EXPECT_EQ(valueOf(setup, mbSetup, "Zone 2"), state);
    }
    touch(setup, mbSetup, "Unit");
    touch(setup, mbSetup, "Name of AUX", true);
    EXPECT_EQ(valueOf(setup, mbSetup, "Name of AUX"), "AUX");
    touch(setup, mbSetup, "Name of AUX");
    EXPECT_EQ(valueOf(setup, mbSetup, "Name of AUX"), "TV");
}

/** The presets are chosen one after the other: nothing moves, and the curve is the one that the unit plays. */
TEST_F(ProgramModelTest, TheEqualiserStaysWhereItIsAndDrawsItsCurve)
{
    ScratchUnit::emptySettings("1792 = 0\n1281 = 6\n1282 = 6\n1283 = 6\n1285 = 6\n1286 = 6\n1287 = 6\n1288 = 12\n"
                               "1289 = 6\n1290 = 6\n1291 = 6\n");
    ProgramModel equaliser(AppEQ, {}, around);
    const auto places = PageLayout(mbEQ, equaliser.content(mbEQ)).buttons;
    const auto curveAt = [&](double hz)
    {
        const auto curve = equaliser.content(mbEQ).curve;
        return std::find_if(curve.begin(), curve.end(), [hz](auto& point) { return point.x >= hz; })->y;
    };
    EXPECT_NEAR(curveAt(500), 0, 0.01);
    touch(equaliser, mbEQ, "Middle");
    EXPECT_NEAR(curveAt(500), 1, 0.1);
    EXPECT_NEAR(curveAt(8000), 0, 0.1);

    ASSERT_TRUE(touch(equaliser, mbEQ, "Jazz"));
    EXPECT_EQ(PageLayout(mbEQ, equaliser.content(mbEQ)).buttons, places);
    EXPECT_NEAR(curveAt(3000), 6, 0.5);
    EXPECT_FALSE(touch(equaliser, mbEQ, "3 kHz")) << "a curve of the unit stays as it is";

    ASSERT_TRUE(touch(equaliser, mbEQ, "Custom"));
    EXPECT_EQ(PageLayout(mbEQ, equaliser.content(mbEQ)).buttons, places);
    EXPECT_NEAR(curveAt(500), 6, 0.1);
    EXPECT_TRUE(touch(equaliser, mbEQ, "500 Hz", true));
    EXPECT_NEAR(curveAt(500), 5, 0.1);
}

TEST_F(ProgramModelTest, ACallIsAnsweredAndEnds)
{
    ScratchUnit::emptySettings("7 = 1\n");
    ProgramModel bluetooth(AppBluetooth, {}, around);
    const auto labels = [&]
    {
        juce::StringArray texts;
        for (const auto& button : bluetooth.content(mbBTPhone).buttons)
            texts.add(button.label);
        return texts.joinIntoString(", ");
    };
    const auto order = [&](const char* words)
    { return bluetooth.order(juce::StringArray::fromTokens(words, " ", "")); };
    EXPECT_NE(order("answer"), "") << "nobody calls";
    EXPECT_EQ(order("connect"), "");
    EXPECT_EQ(order("call Marina"), "");
    EXPECT_EQ(labels(), "Answer, Hang up");
    ASSERT_TRUE(touch(bluetooth, mbBTPhone, "Answer"));
    EXPECT_EQ(labels(), "Hang up");
    EXPECT_TRUE(bluetooth.content(mbBTPhone).status.startsWith("In a call"));
    EXPECT_EQ(order("call Harbour"), "");
    EXPECT_EQ(labels(), "Answer, Hang up") << "another one calls";
    touch(bluetooth, mbBTPhone, "Hang up");
    EXPECT_NE(order("answer"), "");
}

TEST_F(ProgramModelTest, StandbySaysWhatPlays)
{
    ProgramModel standby(AppStandby, {}, around);
    const auto status = [&] { return standby.content(mbStandby).status; };
    EXPECT_EQ(status(), "Nothing plays");
    standby.setPlaying(mbUSBAudio);
    EXPECT_EQ(status(), "USB music plays on");
    standby.setPlaying(mbAVOff);
    EXPECT_EQ(status(), "Nothing plays");
}
