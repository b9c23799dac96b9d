#include "bench/console/Verb.h"
#include "support/Eventually.h"
#include "support/XServer.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <thread>
#include <xcb/xcb.h>

using namespace Bench;

namespace
{

/**
    Looks at the screen all the time, and at each window that comes or goes: from the first page on, a page covers it.
    What is painted of a page that has just come is not looked at; until it is, the page before is what is seen.
*/
class Onlooker
{
public:
    Onlooker()
        : connection(xcb_connect(nullptr, nullptr))
    {
        const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        root = screen->root;
        const std::uint32_t values[] { bare, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY };
        xcb_change_window_attributes(connection, root, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
        xcb_clear_area(connection, 0, root, 0, 0, 0, 0);
        xcb_flush(connection);
        thread = std::jthread(
            [this](const std::stop_token& stop)
            {
                while (!stop.stop_requested())
                    look();
            });
    }
    ~Onlooker()
    {
        thread = {};
        xcb_disconnect(connection);
    }
    Onlooker(const Onlooker&) = delete;
    Onlooker& operator=(const Onlooker&) = delete;

    bool seesPage() const { return covered; }
    /** At the left edge, where a page has nothing. */
    bool seesNight() const { return (edge & 0xff) < 0x80; }

    // Of the time from the first page on, up to `stop`.
    void stop() { thread = {}; }
    int getLooks() const { return looks; }
    int getPagesOpened() const { return opened; }
    int getBareLooks() const { return bareLooks; }
    int getTimesWithoutPage() const { return timesWithoutPage; }

private:
    static constexpr std::uint32_t bare = 0xff00ff;

    void look()
    {
        takeEvents();
        // Every window of a page is as large as the screen: one line of it tells. No bar comes here.
        constexpr std::int16_t line = 240;
        constexpr std::uint16_t width = 800;
        auto* reply = xcb_get_image_reply(
            connection, xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, 0, line, width, 1, UINT32_MAX),
            nullptr);
        ASSERT_NE(reply, nullptr);
        const auto* pixels = reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(reply));
        const bool isBare =
            std::any_of(pixels, pixels + width, [](std::uint32_t pixel) { return (pixel & 0xffffff) == bare; });
        edge = pixels[0];
        std::free(reply);
        covered = covered || !isBare;
        looks += covered;
        bareLooks += covered && isBare;
    }

    void takeEvents()
    {
        while (auto* event = xcb_poll_for_event(connection))
        {
            switch (event->response_type & 0x7f)
            {
            case XCB_CONFIGURE_NOTIFY:
                if (const auto& now = reinterpret_cast<const xcb_configure_notify_event_t&>(*event);
                    now.width == 800 && now.height == 480)
                    pages.insert(now.window);
                break;
            case XCB_MAP_NOTIFY:
                if (const auto window = reinterpret_cast<const xcb_map_notify_event_t&>(*event).window;
                    pages.contains(window))
                    opened += seen.insert(window).second;
                break;
            case XCB_UNMAP_NOTIFY:
                gone(reinterpret_cast<const xcb_unmap_notify_event_t&>(*event).window);
                break;
            case XCB_DESTROY_NOTIFY:
                gone(reinterpret_cast<const xcb_destroy_notify_event_t&>(*event).window);
                break;
            default:
                break;
            }
            std::free(event);
        }
    }

    void gone(xcb_window_t window)
    {
        if (seen.erase(window) > 0 && seen.empty() && covered)
            ++timesWithoutPage;
    }

    xcb_connection_t* connection;
    xcb_window_t root;
    std::set<xcb_window_t> pages, seen; ///< of these, all and those that are mapped
    std::atomic<bool> covered { false };
    std::atomic<std::uint32_t> edge { bare };
    int looks = 0, bareLooks = 0, opened = 0, timesWithoutPage = 0;
    std::jthread thread;
};

} // namespace

/**
    A user goes through the pages by all ways there are, one after the other: the screen is never bare in between. At
    last the boat's lights are switched on, and off.
*/
TEST(PagesOnScreen, OneFollowsTheOtherWithoutAGap)
{
    if (!XServer::isInstalled())
        GTEST_SKIP() << "Xvfb is not installed";
    const XServer server;
    ASSERT_TRUE(server.isRunning()) << "Xvfb does not start";
    Onlooker onlooker;
    Unit unit(UnitOptions::besideThisProgram());
    std::ostringstream output;
    Console console(unit, Style(false), output, false);
    ASSERT_EQ(unit.start(), "");
    ASSERT_EQ(unit.startEngine(), "");
    const auto say = [&](const char* line)
    {
        const auto outcome = runLine(console, line);
        EXPECT_NE(outcome.kind, Outcome::failed) << line << ": " << outcome.error;
    };
    say("expect page fm settled");
    ASSERT_TRUE(eventually([&] { return onlooker.seesPage(); }));
    constexpr int changes = 44;
    say(("switches " + std::to_string(changes) + " within 3600s").c_str());
    say("lights on");
    EXPECT_TRUE(eventually([&] { return onlooker.seesNight(); }));
    say("lights off");
    EXPECT_TRUE(eventually([&] { return !onlooker.seesNight(); }));
    onlooker.stop();
    EXPECT_EQ(onlooker.getTimesWithoutPage(), 0);
    EXPECT_EQ(onlooker.getBareLooks(), 0) << "of " << onlooker.getLooks();
    // Two pages of one program share their window.
    EXPECT_GT(onlooker.getPagesOpened(), changes / 2);
    RecordProperty("looks", onlooker.getLooks());
}
