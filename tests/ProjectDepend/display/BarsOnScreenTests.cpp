#include "EngineApi/Bars.h"
#include "EngineApi/Provided.h"
#include "ProjectDepend/Bars.h"
#include "kernel/MessageIds.h"
#include "platform/Configuration.h"
#include "platform/Resources.h"
#include "support/Pump.h"
#include "support/ScratchUnit.h"
#include "support/XServer.h"

#include <gtest/gtest.h>
#include <juce_graphics/juce_graphics.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

using namespace Platform;

namespace
{

constexpr juce::uint32 background = 0xff4060a0;

/** Somebody in front of the screen: looks at it and touches it. */
class Person
{
public:
    Person()
        : connection(xcb_connect(nullptr, nullptr))
        , root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root)
    {
        xcb_change_window_attributes(connection, root, XCB_CW_BACK_PIXEL, &background);
        xcb_clear_area(connection, 0, root, 0, 0, 0, 0);
        xcb_flush(connection);
    }
    ~Person() { xcb_disconnect(connection); }

    juce::Image look(juce::Rectangle<int> area) const
    {
        auto* reply = xcb_get_image_reply(
            connection,
            xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, static_cast<std::int16_t>(area.getX()),
                          static_cast<std::int16_t>(area.getY()), static_cast<std::uint16_t>(area.getWidth()),
                          static_cast<std::uint16_t>(area.getHeight()), UINT32_MAX),
            nullptr);
        juce::Image image(juce::Image::RGB, area.getWidth(), area.getHeight(), true, juce::SoftwareImageType());
        const auto* pixels = reinterpret_cast<const juce::uint32*>(xcb_get_image_data(reply));
        for (int index = 0; index < area.getWidth() * area.getHeight(); ++index)
            image.setPixelAt(index % area.getWidth(), index / area.getWidth(),
                             juce::Colour(pixels[index] | 0xff000000));
        std::free(reply);
        return image;
    }

    void press(int x, int y, std::uint8_t button = 1) const
    {
        xcb_test_fake_input(connection, XCB_MOTION_NOTIFY, 0, 0, root, static_cast<std::int16_t>(x),
                            static_cast<std::int16_t>(y), 0);
        for (const auto type : { XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE })
            xcb_test_fake_input(connection, static_cast<std::uint8_t>(type), button, 0, root, 0, 0, 0);
        xcb_flush(connection);
    }

private:
    xcb_connection_t* connection;
    xcb_window_t root;
};

class BarsOnScreenTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!XServer::isInstalled())
            GTEST_SKIP() << "Xvfb is not installed";
        // It outlives the application framework, whose end without a display would be the end of the process.
        static const XServer server;
        ASSERT_TRUE(server.isRunning()) << "Xvfb does not start";
        // As in the engine: an application of its own survives what a display without window manager does not know.
        juce::JUCEApplicationBase::createInstance = []() -> juce::JUCEApplicationBase* { return nullptr; };
        ASSERT_TRUE(UIHelper::hasDisplay());
        person.emplace();
        ScratchUnit::emptySettings("284 = \"Zone 2\"\n24 = 52\n40 = \"Harbour\"\n");
        const juce::String built = HEADUNIT_BUILD_DIR "/resources/";
        const auto before = std::exchange(Configuration::get().resourcePath, built);
        AppConfig::loadFont();
        Configuration::get().resourcePath = before;
        ASSERT_TRUE(CVXResPathManager::getInstance()->addResPath(built + "MainRes.spp", {}));
        Bar::createBars();
    }
    void TearDown() override
    {
        Bar::removeBars();
        ResourceAutoDelete();
    }

    static EngineApi::VolumeBar& volumeBar() { return *EngineApi::Provided<EngineApi::VolumeBar>::get(); }
    static EngineApi::FavoriteBar& favoriteBar() { return *EngineApi::Provided<EngineApi::FavoriteBar>::get(); }
    static EngineApi::LowBatteryBar& batteryBar() { return *EngineApi::Provided<EngineApi::LowBatteryBar>::get(); }

    /** How many in a thousand pixels of the screen outside `text` are those of the picture. */
    int likeness(const juce::String& pictureName, juce::Rectangle<int> bounds, juce::Rectangle<int> text) const
    {
        const auto stream = CVXResPathManager::getInstance()->open(pictureName);
        const auto picture = stream == nullptr ? juce::Image() : juce::PNGImageFormat().decodeImage(*stream);
        if (picture.getBounds() != bounds.withZeroOrigin())
            return 0;
        const auto screen = person->look(bounds);
        int compared = 0;
        int alike = 0;
        for (int y = 0; y < picture.getHeight(); ++y)
            for (int x = 0; x < picture.getWidth(); ++x)
            {
                const auto wanted = picture.getPixelAt(x, y);
                if (text.contains(x, y) || wanted.getAlpha() < 128)
                    continue;
                // Without a compositing manager the display ignores how transparent a pixel is.
                const auto opaque = juce::Colours::black.overlaidWith(wanted);
                const auto found = screen.getPixelAt(x, y);
                ++compared;
                alike += std::abs(opaque.getRed() - found.getRed()) < 8 &&
                         std::abs(opaque.getGreen() - found.getGreen()) < 8 &&
                         std::abs(opaque.getBlue() - found.getBlue()) < 8;
            }
        return alike * 1000 / compared;
    }

    /** Pixels of the text's own colour, which the picture does not have there. */
    int inked(juce::Rectangle<int> area, juce::Colour colour) const
    {
        const auto screen = person->look(area);
        int count = 0;
        for (int y = 0; y < area.getHeight(); ++y)
            for (int x = 0; x < area.getWidth(); ++x)
                count += screen.getPixelAt(x, y) == colour;
        return count;
    }

    bool isBackground(juce::Point<int> point) const
    {
        return inked({ point.x, point.y, 1, 1 }, juce::Colour(background)) == 1;
    }

    std::optional<Person> person;
    const juce::Rectangle<int> volumeBounds { 110, 342, 580, 122 };
    const juce::Rectangle<int> favoriteBounds { 14, 164, 772, 300 };
    const juce::Rectangle<int> batteryBounds { 90, 24, 620, 136 };
};

} // namespace

TEST_F(BarsOnScreenTest, EachBarShowsItsPictureAndItsText)
{
    const auto nothing = juce::Rectangle<int>();
    const juce::Rectangle<int> zoneName { 118, 16, 300, 36 };
    const juce::Rectangle<int> muteText { 262, 21, 240, 80 };
    const juce::Rectangle<int> alertTexts { 190, 20, 410, 92 };
    const juce::Rectangle<int> favoriteControls { 16, 12, 740, 272 };
    const juce::Colour amber(0xffffc21a);
    const juce::Colour white(0xffffffff);
    const struct
    {
        EngineApi::BarMessages& bar;
        int id, arg1, arg2;
        const char* picture;
        juce::Rectangle<int> bounds, text;
        juce::Colour ink;
    } cases[] {
        { volumeBar(), Kernel::MSG_VOLUME_SHOW, 1, 27, "volumebar\\MainVolume\\ORB600 Vol27.png", volumeBounds, nothing,
          white },
        { volumeBar(), Kernel::MSG_VOLUME_SHOW, 1, 50, "volumebar\\MainVolume\\ORB600 Vol50.png", volumeBounds, nothing,
          white },
        { volumeBar(), Kernel::MSG_VOLUME_SHOW, 2, 5, "volumebar\\Zone2Volume\\ZVOL5.png", volumeBounds, zoneName,
          white },
        { volumeBar(), Kernel::MSG_VOLUME_SHOW, 3, 1, "volumebar\\mute.png", volumeBounds, muteText, white },
        { favoriteBar(), Kernel::MSG_FAVORITES_SELECT, 9, 0, "Farvoritebar\\background.png", favoriteBounds,
          favoriteControls, white },
        { batteryBar(), Kernel::MSG_LOW_BATTERY_ALERT, 1, 0, "VoltmeterBar\\LowBattery.png", batteryBounds, alertTexts,
          amber },
    };
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.picture);
        // Shown again until it has been seen: on a busy machine its time may be over before.
        EXPECT_TRUE(pumpUntil(
            [&]
            {
                each.bar.postMessage(each.id, each.arg1, each.arg2, nullptr);
                return likeness(each.picture, each.bounds, each.text) >= 990;
            }))
            << likeness(each.picture, each.bounds, each.text);
        if (!each.text.isEmpty())
        {
            EXPECT_GT(inked(each.text + each.bounds.getPosition(), each.ink), 300);
        }
        EXPECT_TRUE(isBackground(each.bounds.getPosition())) << "the corners are round";
        EXPECT_TRUE(isBackground(each.bounds.getBottomRight() - juce::Point(1, 1)));
    }
    // The bar that was shown last is in front, though it was there first. A neighbouring volume is not taken for this
    // one.
    ASSERT_TRUE(pumpUntil(
        [&]
        {
            volumeBar().postMessage(Kernel::MSG_VOLUME_SHOW, 1, 27, nullptr);
            return likeness(cases[0].picture, volumeBounds, nothing) >= 990;
        }));
    EXPECT_LT(likeness("volumebar\\MainVolume\\ORB600 Vol28.png", volumeBounds, nothing), 990);
}

TEST_F(BarsOnScreenTest, TheFavoritesShowWhichIsSelectedUntilATouchBesideThem)
{
    const auto onBar = [this](int x, int y, int width, int height)
    { return juce::Rectangle<int>(x, y, width, height) + favoriteBounds.getPosition(); };
    const auto first = onBar(16, 66, 176, 103);
    const auto eighth = onBar(580, 181, 176, 103);
    const auto icon = onBar(29, 79, 96, 34);
    const juce::Rectangle<int> inTile { 10, 10, 156, 83 };
    const auto shows = [&](const char* picture, juce::Rectangle<int> tile)
    { return likeness(picture, tile, inTile) >= 990; };
    const char* selected = "farvoritebar\\fav_button_p.png";
    const char* normal = "farvoritebar\\fav_button_n.png";

    favoriteBar().postMessage(Kernel::MSG_FAVORITES_SELECT, 1, 0, nullptr);
    EXPECT_TRUE(pumpUntil([&] { return shows(selected, first) && shows(normal, eighth); }));
    EXPECT_GE(likeness("farvoritebar\\fm.png", icon, {}), 980);
    EXPECT_GT(inked(onBar(29, 119, 150, 38), juce::Colours::white), 100) << "the label";

    favoriteBar().postMessage(Kernel::MSG_FAVORITES_SELECT, 16, 0, nullptr);
    EXPECT_TRUE(pumpUntil([&] { return shows(normal, first) && shows(selected, eighth); }));
    EXPECT_LT(likeness("farvoritebar\\fm.png", icon, {}), 500) << "the ninth is empty";

    const auto notice = onBar(80, 12, 470, 44);
    const juce::Colour amber(0xffffc21a);
    EXPECT_EQ(inked(notice, amber), 0);
    favoriteBar().postMessage(Kernel::MSG_FAVORITES_EMPTY_SLOT, 0, 0, nullptr);
    EXPECT_TRUE(pumpUntil([&] { return inked(notice, amber) > 10000; }));

    const auto pause = [] { juce::MessageManager::getInstance()->runDispatchLoopUntil(100); };
    person->press(first.getCentreX(), first.getCentreY());
    pause();
    person->press(20, 20, 4); // the wheel
    pause();
    EXPECT_TRUE(favoriteBar().isShown());
    person->press(20, 20);
    EXPECT_TRUE(pumpUntil([&] { return !favoriteBar().isShown(); }));
    EXPECT_TRUE(isBackground(first.getCentre())) << "gone at once";
}
