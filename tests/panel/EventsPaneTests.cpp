#include "bench/console/EventText.h"
#include "bench/console/Verb.h"
#include "bench/panel/Look.h"
#include "panel/PanelFixture.h"

#include <gmock/gmock.h>

namespace
{

using namespace Bench;

class EventsPaneTest : public PanelTest
{
protected:
    /** Inside the uppermost line. */
    juce::Point<int> firstLine()
    {
        place("Events");
        return find(*window, "Events")->localPointToGlobal(juce::Point<int>(60, 8));
    }
    juce::String told() { return find(*window, "Events")->getDescription(); }

    static juce::Component* named(juce::Component& within, const juce::String& name)
    {
        if (within.getName() == name)
            return &within;
        for (auto* child : within.getChildren())
            if (auto* found = named(*child, name))
                return found;
        return nullptr;
    }

    /** Whether a line stands over the whole height of the lanes. */
    bool momentIsMarked()
    {
        auto& lanes = *named(*window, "Link");
        const auto picture = lanes.createComponentSnapshot(lanes.getLocalBounds());
        const auto ink = BenchPanel::Look::of(lanes).colours.ink;
        for (int x = 0; x < picture.getWidth(); ++x)
        {
            int y = 0;
            while (y < picture.getHeight() && picture.getPixelAt(x, y) == ink)
                ++y;
            if (y == picture.getHeight())
                return true;
        }
        return false;
    }
};

// Only what the chips let through is listed, as the console lists it; a click tells what a line came with, and Escape puts
// it away.
TEST_F(EventsPaneTest, ListsWhatIsWantedAndTellsWhatItCameWith)
{
    for (const auto* name : { "pages", "programs", "sound", "network", "remote", "unit" })
        hand->click(place(name));
    hand->click(firstLine());
    ASSERT_TRUE(pumpUntil([&] { return told().isNotEmpty(); }));
    const auto stream = juce::StringArray::fromLines(told())[0].upToFirstOccurrenceOf("  ", false, false);
    EXPECT_EQ(subjectOf({ 0, {}, stream.toStdString(), {} }).name, "mcu") << told();
    std::ostringstream output;
    Console console(*unit, Bench::Style(false), output, false);
    EXPECT_EQ(runLine(console, "events 1000 mcu").kind, Outcome::done);
    EXPECT_THAT(output.str(), testing::HasSubstr(stream.toStdString()));
    EXPECT_THAT(output.str(), testing::Not(testing::HasSubstr("page mbFM shown")));
    hand->type(0xff1b);
    EXPECT_TRUE(pumpUntil([&] { return told().isEmpty(); }));
}

// The moment of the line that the mouse is at is marked among the frames of the link, as long as it is there.
TEST_F(EventsPaneTest, MarksTheMomentOnTheLink)
{
    EXPECT_TRUE(comesOfHand(place("Mark"), [&] { return !momentIsMarked(); }));
    EXPECT_TRUE(comesOfHand(firstLine(), [&] { return momentIsMarked(); }));
    EXPECT_TRUE(comesOfHand(place("The unit's screen"), [&] { return !momentIsMarked(); }));
}

} // namespace
