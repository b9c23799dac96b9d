#include "EngineApi/Bars.h"
#include "EngineApi/Provided.h"
#include "ProjectDepend/Bars.h"
#include "kernel/MessageIds.h"
#include "platform/base/Process.h"
#include "platform/config/Configuration.h"
#include "platform/config/Resources.h"
#include "platform/screen/OverlayPeer.h"
#include "platform/screen/Window.h"
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

constexpr juce::uint32 background = 0xffe8eef4;

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

    void watchRaises() const
    {
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &events);
        xcb_flush(connection);
    }
    /** How often any window was raised. */
    int takeRaises() const
    {
        int count = 0;
        while (auto* event = xcb_poll_for_event(connection))
        {
            count += (event->response_type & 0x7f) == XCB_CONFIGURE_NOTIFY;
            std::free(event);
        }
        return count;
    }

private:
    xcb_connection_t* connection;
    xcb_window_t root;
};

/** A source program with a page that fills the screen. */
class Page
{
public:
    explicit Page(juce::uint32 pageColour)
        : colour(pageColour)
        , connection(xcb_connect(nullptr, nullptr))
        , window(xcb_generate_id(connection))
    {
        const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, screen->width_in_pixels,
                          screen->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL, &colour);
        xcb_map_window(connection, window);
        xcb_flush(connection);
    }
    ~Page() { xcb_disconnect(connection); }

    void raise() const
    {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_flush(connection);
    }
    /** As the engine shows a page again: a window manager is asked. */
    void activate() const { setForegroundWindow(window); }

    const juce::uint32 colour;

private:
    xcb_connection_t* connection;
    xcb_window_t window;
};

class BarsOnScreenTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        server.emplace();
        keepFrameworkOffDisplay();
    }
    static void TearDownTestSuite() { server.reset(); }

    void SetUp() override
    {
        if (!XServer::isInstalled())
            GTEST_SKIP() << "Xvfb is not installed";
        ASSERT_TRUE(server->isRunning()) << "Xvfb does not start";
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
    static EngineApi::FavoriteBar& favouriteBar() { return *EngineApi::Provided<EngineApi::FavoriteBar>::get(); }
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
                // At the edge of a bar a pixel has its full colour; what is under one inside is dark.
                const auto found = screen.getPixelAt(x, y);
                const auto is = [found](juce::Colour colour)
                {
                    return std::abs(colour.getRed() - found.getRed()) < 8 &&
                           std::abs(colour.getGreen() - found.getGreen()) < 8 &&
                           std::abs(colour.getBlue() - found.getBlue()) < 8;
                };
                ++compared;
                alike += is(wanted.withAlpha(1.0f)) || is(juce::Colours::black.overlaidWith(wanted));
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

    bool isColour(juce::Point<int> point, juce::uint32 colour) const
    {
        return inked({ point.x, point.y, 1, 1 }, juce::Colour(colour)) == 1;
    }
    bool isBackground(juce::Point<int> point) const { return isColour(point, background); }

    static void pause(int milliseconds) { juce::MessageManager::getInstance()->runDispatchLoopUntil(milliseconds); }

    /** Each bar, with a picture of it and a place beside it. */
    struct ShownBar
    {
        EngineApi::BarMessages& bar;
        int id, arg1, arg2;
        const char* picture;
        juce::Rectangle<int> bounds, text;
        juce::Point<int> beside;
    };
    std::array<ShownBar, 3> eachBar() const
    {
        return {
            { { volumeBar(), Kernel::MSG_VOLUME_SHOW, 3, 1, "volumebar\\mute.png", muteBounds, muteText, { 400, 250 } },
              { favouriteBar(),
                Kernel::MSG_FAVOURITES_SELECT,
                9,
                0,
                "Farvoritebar\\background.png",
                favouriteBounds,
                favouriteControls,
                { 400, 110 } },
              { batteryBar(),
                Kernel::MSG_LOW_BATTERY_ALERT,
                1,
                0,
                "VoltmeterBar\\LowBattery.png",
                batteryBounds,
                alertTexts,
                { 400, 250 } } }
        };
    }

    bool isSeen(const ShownBar& bar) const { return likeness(bar.picture, bar.bounds, bar.text) >= 990; }

    /** A page opens under each bar, another one over it, and the first is shown again: the bar is above every time. */
    void expectBarsAbovePages() const
    {
        for (const auto& each : eachBar())
        {
            SCOPED_TRACE(each.picture);
            each.bar.postMessage(each.id, each.arg1, each.arg2, nullptr);
            EXPECT_TRUE(pumpUntil([&] { return isSeen(each); }));
            const auto expectUnderBar = [&](const Page& page, const char* when)
            { EXPECT_TRUE(pumpUntil([&] { return isColour(each.beside, page.colour) && isSeen(each); })) << when; };
            const Page first(0xfff8f8f8);
            expectUnderBar(first, "a page opens");
            const Page second(0xff101820);
            expectUnderBar(second, "another page opens");
            first.activate();
            expectUnderBar(first, "the first page is shown again");
            hideAll();
        }
    }

    static void hideAll()
    {
        volumeBar().postMessage(Kernel::MSG_VOLUME_SHOW, 3, 0, nullptr);
        volumeBar().postMessage(EngineApi::MSG_BAR_CLOSE, 0, 0, nullptr);
        favouriteBar().postMessage(Kernel::MSG_FAVOURITES_HIDE, 0, 0, nullptr);
        batteryBar().postMessage(Kernel::MSG_LOW_BATTERY_ALERT, 0, 0, nullptr);
    }

    static inline std::optional<XServer> server;
    std::optional<Person> person;
    const juce::Rectangle<int> volumeBounds { 110, 342, 580, 122 };
    const juce::Rectangle<int> favouriteBounds { 14, 164, 772, 300 };
    const juce::Rectangle<int> batteryBounds { 90, 52, 620, 136 };
    const juce::Rectangle<int> muteBounds { 308, 6, 184, 40 };
    const juce::Rectangle<int> muteText { 74, 4, 96, 32 };
    const juce::Rectangle<int> alertTexts { 190, 20, 410, 92 };
    const juce::Rectangle<int> favouriteControls { 16, 12, 740, 272 };
};

} // namespace

TEST_F(BarsOnScreenTest, EachBarShowsItsPictureAndItsText)
{
    const auto nothing = juce::Rectangle<int>();
    const juce::Rectangle<int> zoneName { 118, 16, 300, 36 };
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
        { volumeBar(), Kernel::MSG_VOLUME_SHOW, 2, 5, "volumebar\\Zone2Volume\\ZVOL5.png", volumeBounds, zoneName,
          white },
        { volumeBar(), Kernel::MSG_VOLUME_SHOW, 3, 1, "volumebar\\mute.png", muteBounds, muteText, white },
        { favouriteBar(), Kernel::MSG_FAVOURITES_SELECT, 9, 0, "Farvoritebar\\background.png", favouriteBounds,
          favouriteControls, white },
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
        hideAll();
    }
    // The bar that was shown last is in front, though it was made first. A neighbouring volume is not taken for this
    // one.
    favouriteBar().postMessage(Kernel::MSG_FAVOURITES_SELECT, 9, 0, nullptr);
    volumeBar().postMessage(Kernel::MSG_VOLUME_SHOW, 1, 27, nullptr);
    ASSERT_TRUE(pumpUntil([&] { return likeness(cases[0].picture, volumeBounds, nothing) >= 990; }));
    EXPECT_LT(likeness("volumebar\\MainVolume\\ORB600 Vol28.png", volumeBounds, nothing), 990);
}

TEST_F(BarsOnScreenTest, TheFavouritesShowWhichIsSelectedUntilATouchBesideThem)
{
    const auto onBar = [this](int x, int y, int width, int height)
    { return juce::Rectangle<int>(x, y, width, height) + favouriteBounds.getPosition(); };
    const auto first = onBar(16, 66, 176, 103);
    const auto eighth = onBar(580, 181, 176, 103);
    const auto icon = onBar(29, 79, 96, 34);
    const juce::Rectangle<int> inTile { 10, 10, 156, 83 };
    const auto shows = [&](const char* picture, juce::Rectangle<int> tile)
    { return likeness(picture, tile, inTile) >= 990; };
    const char* selected = "farvoritebar\\fav_button_p.png";
    const char* normal = "farvoritebar\\fav_button_n.png";

    favouriteBar().postMessage(Kernel::MSG_FAVOURITES_SELECT, 1, 0, nullptr);
    EXPECT_TRUE(pumpUntil([&] { return shows(selected, first) && shows(normal, eighth); }));
    EXPECT_GE(likeness("farvoritebar\\fm.png", icon, {}), 980);
    EXPECT_GT(inked(onBar(29, 119, 150, 38), juce::Colours::white), 100) << "the label";

    favouriteBar().postMessage(Kernel::MSG_FAVOURITES_SELECT, 16, 0, nullptr);
    EXPECT_TRUE(pumpUntil([&] { return shows(normal, first) && shows(selected, eighth); }));
    EXPECT_LT(likeness("farvoritebar\\fm.png", icon, {}), 500) << "the ninth is empty";

    const auto notice = onBar(80, 12, 470, 44);
    const juce::Colour amber(0xffffc21a);
    EXPECT_EQ(inked(notice, amber), 0);
    favouriteBar().postMessage(Kernel::MSG_FAVOURITES_EMPTY_SLOT, 0, 0, nullptr);
    EXPECT_TRUE(pumpUntil([&] { return inked(notice, amber) > 10000; }));

    person->press(first.getCentreX(), first.getCentreY());
    pause(100);
    person->press(20, 20, 4); // the wheel
    pause(100);
    EXPECT_TRUE(favouriteBar().isShown());
    person->press(20, 20);
    EXPECT_TRUE(pumpUntil([&] { return !favouriteBar().isShown(); }));
    EXPECT_TRUE(pumpUntil([&] { return isBackground(first.getCentre()); }));
}

TEST_F(BarsOnScreenTest, ABarStaysAboveThePagesThatOpenOrAreRaised)
{
    expectBarsAbovePages();
}

TEST_F(BarsOnScreenTest, ABarStaysAboveThePagesThatAWindowManagerShows)
{
    if (!juce::File("/usr/bin/openbox").existsAsFile())
        GTEST_SKIP() << "openbox is not installed";
    // It says when it is ready: what opens before may be lost to it.
    const juce::TemporaryFile ready;
    const auto manager = createProcess("/usr/bin/openbox",
                                       { "--sm-disable", "--startup", "touch " + ready.getFile().getFullPathName() });
    ASSERT_NE(manager, nullptr);
    ASSERT_TRUE(eventually([&] { return ready.getFile().existsAsFile(); }));
    expectBarsAbovePages();
    manager->terminate();
    ProcessWaiter().wait({ manager });
}

/** A page that raises itself all the time is not answered each time, and has lost when it stops. */
TEST_F(BarsOnScreenTest, APageThatKeepsRaisingItselfStartsNoFight)
{
    const auto mute = eachBar()[0];
    mute.bar.postMessage(mute.id, mute.arg1, mute.arg2, nullptr);
    const Page still(0xff101820);
    const Page page(0xfff8f8f8);
    EXPECT_TRUE(pumpUntil([&] { return isSeen(mute) && isColour(mute.beside, page.colour); }));
    person->watchRaises();
    constexpr int rounds = 200;
    for (int round = 0; round < rounds; ++round)
    {
        (round % 2 == 0 ? still : page).raise();
        pause(5);
    }
    EXPECT_TRUE(pumpUntil([&] { return isSeen(mute); }));
    EXPECT_LT(person->takeRaises(), rounds + 20);
}

/** A control in a window of the engine's own is pressed where it is, and nowhere else. */
TEST_F(BarsOnScreenTest, AControlIsPressedWhereItIs)
{
    struct Button : juce::TextButton
    {
        ~Button() override { removeFromDesktop(); }
        juce::ComponentPeer* createNewPeer(int style, void*) override { return new OverlayPeer(*this, style); }
    };
    Button button;
    int clicks = 0;
    button.onClick = [&clicks] { ++clicks; };
    button.setBounds(200, 100, 80, 40);
    button.addToDesktop(0);
    button.setVisible(true);
    EXPECT_TRUE(pumpUntil([&] { return !isBackground({ 240, 120 }); }));
    person->press(150, 120);
    person->press(240, 120);
    EXPECT_TRUE(pumpUntil([&] { return clicks > 0; }));
    EXPECT_EQ(clicks, 1);
}

/** The display ends under a bar that is shown, and comes back: so does the bar, while the engine went on. */
TEST_F(BarsOnScreenTest, ABarComesBackWithTheDisplay)
{
    const auto mute = eachBar()[0];
    mute.bar.postMessage(mute.id, mute.arg1, mute.arg2, nullptr);
    EXPECT_TRUE(pumpUntil([&] { return isSeen(mute); }));
    person.reset();
    server->stop();
    pause(50);
    volumeBar().postMessage(Kernel::MSG_VOLUME_SHOW, 1, 27, nullptr);
    EXPECT_TRUE(volumeBar().isShown());
    volumeBar().postMessage(mute.id, mute.arg1, mute.arg2, nullptr);
    server->start();
    ASSERT_TRUE(server->isRunning());
    person.emplace();
    EXPECT_TRUE(pumpUntil([&] { return isSeen(mute); }));
    person->press(20, 20);
    EXPECT_TRUE(pumpUntil([&] { return !volumeBar().isShown(); })) << "touches are seen again";
}
