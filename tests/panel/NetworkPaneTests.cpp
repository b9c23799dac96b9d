#include "panel/PanelFixture.h"

namespace
{

/** The network's display sees and changes both zones; what the unit tells is what the row shows. */
class NetworkPaneTest : public PanelTest
{
protected:
    Bench::NetworkDisplay::Zone zone(int number) const
    {
        auto zones = unit->networkDisplay->state().zones;
        return zones[number];
    }
};

// A drag says the value where it is let go, and each notch of the wheel goes on from there, although the unit answers later.
TEST_F(NetworkPaneTest, ChangesAVolumeByDragAndWheel)
{
    const auto slider = place("Zone 2 volume");
    hand->moveTo(slider);
    hand->press(Hand::left);
    hand->moveTo(slider.translated(-300, 0));
    hand->release(Hand::left);
    EXPECT_TRUE(pumpUntil([&] { return zone(2).volume == 0; }));
    hand->moveTo(slider);
    for (int i = 0; i < 3; ++i)
        hand->click(slider, Hand::wheelUp);
    EXPECT_TRUE(pumpUntil([&] { return zone(2).volume == 6; })) << *zone(2).volume;
}

// The volumes are asked for by a click as long as nobody has told them; then each zone has its own steps, and what the unit
// answers stands below.
TEST_F(NetworkPaneTest, AsksForTheVolumesAndStepsOneZone)
{
    hand->click(place("no volume was told yet: a click asks for them"));
    EXPECT_TRUE(pumpUntil([&] { return zone(1).volume && zone(2).volume; }));
    const auto before1 = *zone(1).volume, before2 = *zone(2).volume;
    hand->click(place("Zone 2 up"));
    hand->click(place("Zone 2 up"));
    hand->click(place("Zone 2 down"));
    EXPECT_TRUE(pumpUntil([&] { return *zone(2).volume == before2 + 2; })) << *zone(2).volume;
    EXPECT_EQ(*zone(1).volume, before1);
    hand->click(place("Zone 1 mute"));
    EXPECT_TRUE(pumpUntil([&] { return zone(1).muted == true; }));
    place("acknowledged 130582: all done");
}

} // namespace
