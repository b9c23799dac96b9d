#include "bench/Names.h"
#include "bench/Settings.h"
#include "bench/program/Profile.h"
#include "platform/Pubhead.h"
#include "support/ScratchUnit.h"

#include <gtest/gtest.h>
#include <set>

namespace
{

using namespace BenchProgram;
using namespace Platform;
using namespace Pubhead;

/** Writes down what the profile sends, and stores settings at once, as the engine does in a while. */
class ProfileTest : public testing::Test, public Host
{
public:
    void send(int what, int, int, Bundle::Ptr) override { sent.push_back(what); }
    void changeSetting(int index, int value) override { VX_SetSetupValueInt(index, value); }
    void changeSetting(int index, const juce::String& value) override { VX_SetSetupValueString(index, value); }
    void postToWindow(int, int, int) override {}
    void report(const char*, const juce::String&) override {}
    void changed() override {}
    int getSource() const override { return NUM_OF_PAGES; }

protected:
    ScratchUnit unit;
    std::vector<int> sent;
    std::unique_ptr<Profile> profile;

    ProfileTest()
    {
        const juce::File factory(HEADUNIT_SOURCE_DIR "/resources/factory-settings.toml");
        ScratchUnit::emptySettings(factory.loadFileAsString());
    }

    void make(int appType) { profile = makeProfile(appType, *this); }
};

} // namespace

// Every value of every row comes once before the first one comes again, and each looks different.
TEST_F(ProfileTest, setupStepsThroughAllValues)
{
    constexpr int auxName = 19;
    std::set<int> settings;
    make(AppSetup);
    VX_SetSetupValueString(auxName, "Flute");
    for (const auto& tab : profile->content(mbSetup).buttons)
    {
        profile->onTouch(mbSetup, tab.id);
        const auto rows = profile->content(mbSetup).rows;
        for (std::size_t i = 0; i < rows.size(); ++i)
        {
            const auto& info = *Bench::settingInfo(rows[i].id);
            std::vector<juce::String> values;
            for (int step = info.lowest; step <= info.highest + 1; ++step)
            {
                profile->onTouch(mbSetup, info.index);
                values.push_back(profile->content(mbSetup).rows[i].value);
            }
            EXPECT_EQ(values.front(), values.back()) << info.name;
            EXPECT_EQ(std::set(values.begin(), values.end()).size(), values.size() - 1) << info.name;
            EXPECT_EQ(VX_IsSetupValueString(info.index), info.isText) << info.name;
            settings.insert(info.index);
        }
    }
    EXPECT_EQ(settings.size(), 18u);
}

TEST_F(ProfileTest, refusesWhatItDoesNotUnderstand)
{
    std::map<int, juce::String> nearMisses {
        { AppRadio, "seek|seek sideways|step up twice|tune 0|tune 101x|region x|sensitivity -1|reception maybe" },
        { AppSirius, "channel 17|channel 24|channel 20th|favourites x|in and out" },
        { AppBluetooth, "link ajar|pandora|signal|signal 1 2|battery full|audio now" },
        { AppiPod, "connect optical|connect analog twice|path analog|pandora on off" },
        { AppAntitheft, "123456789|12a4" },
        { AppUSB, "play|play 1" },
        { AppMainMenu, "fm am|state of things" }
    };
    for (const auto appType : Bench::allApps())
    {
        make(appType);
        for (const auto& words : juce::StringArray::fromTokens("| |nonsense|1 2 3|" + nearMisses[appType], "|", ""))
            EXPECT_NE(profile->onOrder(juce::StringArray::fromTokens(words, " ", "")), "")
                << appTypeName(appType) << ": " << words;
    }
    EXPECT_TRUE(sent.empty());
}
