#include "bench/console/Verb.h"
#include "bench/panel/SoundPane.h"
#include "panel/PanelFixture.h"

#include <cmath>

namespace
{

using namespace Bench;
using BenchPanel::waysOut;

class SoundPaneTest : public PanelTest
{
protected:
    BenchPanel::WayOut front() const
    {
        const Loop::Turn turn(unit->loop);
        return waysOut(unit->dsp->memory())[0];
    }
    /** What the meters say. */
    juce::String levels()
    {
        place("Level of the outputs");
        return dynamic_cast<juce::TooltipClient&>(*find(*window, "Level of the outputs")).getTooltip();
    }
    /** Of the curve, a number for each point. */
    std::vector<juce::uint32> picture()
    {
        place("Curve of the DSP");
        auto& curve = *find(*window, "Curve of the DSP");
        const auto image = curve.createComponentSnapshot(curve.getLocalBounds());
        std::vector<juce::uint32> points;
        for (int y = 0; y < image.getHeight(); ++y)
            for (int x = 0; x < image.getWidth(); ++x)
                points.push_back(image.getPixelAt(x, y).getARGB());
        return points;
    }
    bool isHeard() const { return std::isfinite(front().level); }
};

// The meters go up with the volume and fall silent with mute, and come back.
TEST_F(SoundPaneTest, ShowsLevelAndMute)
{
    ASSERT_TRUE(pumpUntil([&] { return isHeard(); }));
    ASSERT_TRUE(pumpUntil([&] { return !levels().contains("front silent"); }));
    const auto before = front().level;
    hand->moveTo(place("Volume"));
    hand->press(Hand::wheelUp);
    hand->release(Hand::wheelUp);
    EXPECT_TRUE(pumpUntil([&] { return front().level > before; }));
    hand->click(place("Mute"));
    EXPECT_TRUE(pumpUntil([&] { return levels().contains("front silent"); })) << levels();
    hand->click(place("Mute"));
    EXPECT_TRUE(pumpUntil([&] { return !levels().contains("front silent"); })) << levels();
}

// The curve moves with what the user sets, and goes back with it.
TEST_F(SoundPaneTest, DrawsTheCurveOfTheEqualiser)
{
    ASSERT_TRUE(pumpUntil([&] { return isHeard() && !levels().contains("front silent"); }));
    std::ostringstream output;
    Console console(*unit, Bench::Style(false), output, false);
    place("Curve of the DSP");
    ASSERT_TRUE(pumpUntil([&] { return find(*window, "Curve of the DSP")->getDescription().isEmpty(); }))
        << "it no longer says why nothing is heard";
    const auto flat = front().curve;
    const auto flatPicture = picture();
    ASSERT_NE(runLine(console, "set eq-preset 3").kind, Outcome::failed);
    EXPECT_TRUE(pumpUntil([&] { return picture() != flatPicture; }));
    EXPECT_NE(front().curve, flat);
    ASSERT_NE(runLine(console, "set eq-preset 0").kind, Outcome::failed);
    EXPECT_TRUE(pumpUntil([&] { return picture() == flatPicture; }));
}

} // namespace
