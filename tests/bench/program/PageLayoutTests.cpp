#include "bench/program/PageLayout.h"
#include "platform/base/Pubhead.h"

#include <gtest/gtest.h>
#include <set>

using namespace BenchProgram;
using namespace Pubhead;

namespace
{

constexpr int finger = 44;
/** Where the engine shows the mute, as long as it lasts, and the volume. */
const juce::Rectangle<int> bars[] { { 308, 6, 184, 40 }, { 110, 342, 580, 122 } };

struct LayoutCase
{
    const char* name;
    int page;
    int buttons, rows, levels, tiles;
    bool keypad;
    PageContent::Picture picture;
    int common; ///< buttons that the page has of its own accord
};

constexpr auto none = PageContent::Picture::none;
constexpr LayoutCase cases[] = { { "texts", mbFM, 4, 0, 0, 0, false, none, 3 },
                                 { "texts, two rows of buttons", mbUSBAudio, 12, 0, 0, 0, false, none, 3 },
                                 { "standby", mbStandby, 0, 0, 0, 0, false, none, 1 },
                                 { "audio off", mbAVOff, 0, 0, 0, 0, false, none, 2 },
                                 { "list", mbSetup, 0, 6, 0, 0, false, none, 2 },
                                 { "list with buttons", mbBTPhone, 5, 6, 0, 0, false, none, 2 },
                                 { "levels", mbEQ, 8, 0, 8, 0, false, none, 2 },
                                 { "menu", mbMainMenu, 0, 0, 0, 12, false, none, 0 },
                                 { "keypad", mbAntitheft, 2, 0, 0, 0, true, none, 0 },
                                 { "camera", mbCamera, 3, 0, 0, 0, false, PageContent::Picture::live, 2 } };

PageContent contentOf(const LayoutCase& layoutCase)
{
    PageContent content;
    content.keypad = layoutCase.keypad;
    content.picture = layoutCase.picture;
    int id = 100;
    for (int i = 0; i < layoutCase.buttons; ++i)
        content.buttons.push_back({ id++, "button" });
    for (int i = 0; i < layoutCase.rows; ++i)
        content.rows.push_back({ id++, "row" });
    for (int i = 0; i < layoutCase.levels; ++i, id += 2)
        content.levels.push_back({ id, id + 1, "level", "0", 0, -6, 6 });
    for (int i = 0; i < layoutCase.tiles; ++i)
        content.tiles.push_back({ id++, mbFM, "tile" });
    return content;
}

} // namespace

// What cannot be hit with a finger, or shares its place with something else, cannot be used.
TEST(PageLayout, GivesEverythingAPlaceForAFinger)
{
    const juce::Rectangle<int> screen(PageLayout::width, PageLayout::height);
    for (const auto& layoutCase : cases)
    {
        SCOPED_TRACE(layoutCase.name);
        const PageLayout layout(layoutCase.page, contentOf(layoutCase));
        std::set<int> ids;
        int common = 0;
        for (const auto& touch : layout.touches)
        {
            EXPECT_TRUE(screen.contains(touch.area));
            for (const auto& bar : bars)
                EXPECT_FALSE(bar.intersects(touch.area)) << touch.area.toString() << " is below a bar";
            EXPECT_GE(touch.area.getWidth(), finger);
            EXPECT_GE(touch.area.getHeight(), finger);
            for (const auto& other : layout.touches)
                EXPECT_TRUE(&other == &touch || !other.area.intersects(touch.area));
            EXPECT_EQ(&touch, layout.touchAt(touch.area.getCentre()));
            if (touch.does == Touch::Does::touches)
                EXPECT_TRUE(ids.insert(touch.number).second) << touch.number;
            else
                ++common;
        }
        const int keys = layoutCase.keypad ? static_cast<int>(PageLayout::keyIds.size()) : 0;
        EXPECT_EQ(static_cast<int>(ids.size()),
                  layoutCase.buttons + layoutCase.rows + 2 * layoutCase.levels + layoutCase.tiles + keys);
        EXPECT_EQ(common, layoutCase.common);
    }
}
