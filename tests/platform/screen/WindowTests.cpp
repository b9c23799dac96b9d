#include "platform/screen/Window.h"

#include "platform/base/Pubhead.h"
#include "platform/channel/Ipc.h"
#include "platform/config/Configuration.h"
#include "support/ErrorLog.h"
#include "support/XServer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <gmock/gmock.h>
#include <mutex>
#include <optional>
#include <xcb/xcb.h>

using namespace Platform;
using testing::ElementsAre;

namespace
{

using Message = std::array<std::int32_t, 3>;

/** Another program on the display, with windows of its own. */
class Program
{
public:
    Program()
        : connection(xcb_connect(nullptr, nullptr))
        , root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root)
    {
    }
    ~Program() { xcb_disconnect(connection); }

    xcb_window_t open(xcb_window_t parent = XCB_NONE) const
    {
        const auto window = xcb_generate_id(connection);
        const std::uint32_t overrideRedirect = 1;
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, parent == XCB_NONE ? root : parent, 0, 0, 10, 10, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                          &overrideRedirect);
        sync();
        return window;
    }

    void setText(xcb_window_t window, const char* property, const char* type, const std::string& text) const
    {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom(property), atom(type), 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
        sync();
    }

    void setValue(xcb_window_t window, const char* property, const char* type, std::uint32_t value) const
    {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom(property), atom(type), 32, 1, &value);
        sync();
    }

    void remove(xcb_window_t window, const char* property) const
    {
        xcb_delete_property(connection, window, atom(property));
        sync();
    }

    xcb_window_t openTitled(const std::string& title) const
    {
        const auto window = open();
        setText(window, "_NET_WM_NAME", "UTF8_STRING", title);
        return window;
    }

    void close(xcb_window_t window) const
    {
        xcb_destroy_window(connection, window);
        sync();
    }

    void watchRoot() const
    {
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &events);
        sync();
    }

    bool isVisible(xcb_window_t window) const
    {
        auto* reply =
            xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), nullptr);
        const bool visible = reply != nullptr && reply->map_state == XCB_MAP_STATE_VIEWABLE;
        std::free(reply);
        return visible;
    }

    xcb_window_t topmost() const
    {
        auto* reply = xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr);
        const auto top = xcb_query_tree_children(reply)[xcb_query_tree_children_length(reply) - 1];
        std::free(reply);
        return top;
    }

    void send(xcb_window_t window, const char* type, int format, std::int32_t first) const
    {
        xcb_client_message_event_t event {};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = static_cast<std::uint8_t>(format);
        event.window = window;
        event.type = atom(type);
        event.data.data32[0] = static_cast<std::uint32_t>(first);
        xcb_send_event(connection, 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
        sync();
    }

    /** Client messages of the type that have come so far, each with the window it was for. */
    std::vector<std::pair<xcb_window_t, Message>> takeMessages(const char* type = "_CORVANE_WINDOW_MESSAGE") const
    {
        sync();
        std::vector<std::pair<xcb_window_t, Message>> messages;
        while (auto* event = xcb_poll_for_event(connection))
        {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE && message.type == atom(type) &&
                message.format == 32)
            {
                Message data;
                std::copy_n(message.data.data32, data.size(), data.begin());
                messages.emplace_back(message.window, data);
            }
            std::free(event);
        }
        return messages;
    }

    /** The server has carried out everything before. */
    void sync() const { std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr)); }

    xcb_atom_t atom(const std::string& name) const
    {
        auto* reply = xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr);
        const auto value = reply->atom;
        std::free(reply);
        return value;
    }

    xcb_connection_t* connection;
    xcb_window_t root;
};

class WindowTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        std::signal(SIGPIPE, SIG_IGN);
        server.emplace();
    }
    static void TearDownTestSuite() { server.reset(); }

    void SetUp() override
    {
        if (!XServer::isInstalled())
            GTEST_SKIP() << "Xvfb is not installed";
        ASSERT_TRUE(server->isRunning()) << "Xvfb does not start";
        program.emplace();
    }
    void TearDown() override
    {
        stopWindowMessages();
        program.reset();
    }

    ErrorLog log;
    static inline std::optional<XServer> server;
    std::optional<Program> program;
};

/** Keeps the window messages that the engine gets. */
class Received
{
public:
    WindowMessageHandler handler()
    {
        return [this](std::int32_t message, std::int32_t wParam, std::int32_t lParam)
        {
            const std::lock_guard guard(lock);
            messages.push_back({ message, wParam, lParam });
        };
    }
    std::vector<Message> get()
    {
        const std::lock_guard guard(lock);
        return messages;
    }
    /** Opens the engine's window with this in place. */
    xcb_window_t openMain()
    {
        startWindowMessages("AppMain", handler());
        EXPECT_TRUE(eventually([] { return findWindow("AppMain") != noWindow; }));
        return findWindow("AppMain");
    }
    bool waitFor(size_t count)
    {
        return eventually([&] { return get().size() >= count; });
    }

private:
    std::mutex lock;
    std::vector<Message> messages;
};

} // namespace

TEST_F(WindowTest, FindsShownAndHiddenWindowsByTheirExactTitle)
{
    const auto modern = program->openTitled("M\xc3\xbcller");
    const auto old = program->open();
    program->setText(old, "WM_NAME", "STRING", "R\xfcssel");
    const auto both = program->open();
    program->setText(both, "_NET_WM_NAME", "UTF8_STRING", "New");
    program->setText(both, "WM_NAME", "STRING", "Old");
    const auto framed = program->open(program->open());
    program->setText(framed, "_NET_WM_NAME", "UTF8_STRING", "Framed");
    const auto shown = program->openTitled("AppRadio");
    showWindow(shown, true);

    const struct
    {
        const char* title;
        xcb_window_t window;
    } cases[] {
        { "M\xc3\xbcller", modern }, { "R\xc3\xbcssel", old }, { "New", both },         { "Old", noWindow },
        { "Framed", framed },        { "AppRadio", shown },    { "AppRadi", noWindow }, { "appradio", noWindow },
        { "AppRadio2", noWindow },   { "", noWindow },
    };
    for (const auto& each : cases)
        EXPECT_EQ(findWindow(juce::String::fromUTF8(each.title)), each.window) << each.title;
}

TEST_F(WindowTest, AMessageReachesItsWindowOnlyAndABroadcastEveryWindow)
{
    const auto first = program->openTitled("First");
    const auto second = program->openTitled("Second");
    EXPECT_TRUE(postWindowMessage(first, 0x8001, -1, INT32_MIN));
    EXPECT_THAT(program->takeMessages(), ElementsAre(std::pair(first, Message { 0x8001, -1, INT32_MIN })));

    Received received;
    received.openMain();
    EXPECT_TRUE(postWindowMessage(allWindows, 5, 6, 7));
    const Message sent { 5, 6, 7 };
    EXPECT_THAT(program->takeMessages(),
                testing::UnorderedElementsAre(std::pair(first, sent), std::pair(second, sent)));
    EXPECT_TRUE(received.waitFor(1));
    EXPECT_THAT(received.get(), ElementsAre(sent));

    program->close(first);
    EXPECT_FALSE(isWindow(first));
    EXPECT_EQ(windowProcess(first), -1);
    EXPECT_EQ(windowProcess(second), -1) << "it does not say";
    EXPECT_FALSE(postWindowMessage(first, 1, 2, 3));
    EXPECT_FALSE(postWindowMessage(noWindow, 1, 2, 3));
    EXPECT_TRUE(program->takeMessages().empty());
}

TEST_F(WindowTest, ShowsHidesAndRaisesWithoutAWindowManager)
{
    const auto first = program->openTitled("First");
    const auto second = program->openTitled("Second");
    showWindow(first, true);
    showWindow(second, true);
    EXPECT_TRUE(program->isVisible(first));
    EXPECT_EQ(program->topmost(), second);
    showWindow(second, false);
    EXPECT_FALSE(program->isVisible(second));
    EXPECT_EQ(findWindow("Second"), second);
    setForegroundWindow(first);
    EXPECT_EQ(program->topmost(), first);
    setForegroundWindow(second);
    EXPECT_EQ(program->topmost(), second);
    EXPECT_TRUE(program->isVisible(second));
}

/** A manager moves windows itself: it is asked, and a manager that has left only its hints on the root is not. */
TEST_F(WindowTest, AWindowManagerIsAskedToActivate)
{
    const auto window = program->openTitled("AppNavi");
    const auto other = program->openTitled("Other");
    const auto manager = program->open();
    program->watchRoot();
    program->setValue(program->root, "_NET_SUPPORTED", "ATOM", program->atom("_NET_ACTIVE_WINDOW"));
    program->setValue(program->root, "_NET_SUPPORTING_WM_CHECK", "WINDOW", manager);
    program->setValue(manager, "_NET_SUPPORTING_WM_CHECK", "WINDOW", manager);
    program->setValue(program->root, "_NET_CLIENT_LIST", "WINDOW", window);

    EXPECT_EQ(findWindow("AppNavi"), window);
    EXPECT_EQ(findWindow("Other"), other);
    setForegroundWindow(window);
    EXPECT_THAT(program->takeMessages("_NET_ACTIVE_WINDOW"), ElementsAre(std::pair(window, Message { 2, 0, 0 })));
    EXPECT_FALSE(program->isVisible(window));

    program->close(manager);
    setForegroundWindow(window);
    EXPECT_TRUE(program->takeMessages("_NET_ACTIVE_WINDOW").empty());
    EXPECT_TRUE(program->isVisible(window));
    for (const auto* hint : { "_NET_SUPPORTED", "_NET_SUPPORTING_WM_CHECK", "_NET_CLIENT_LIST" })
        program->remove(program->root, hint);
}

TEST_F(WindowTest, TheEnginesWindowGetsEveryMessageInOrder)
{
    constexpr int count = 1000;
    Received received;
    const auto window = received.openMain();
    ASSERT_NE(window, noWindow);
    EXPECT_EQ(windowProcess(window), getpid());
    EXPECT_FALSE(program->isVisible(window));
    program->send(window, "SOMETHING_ELSE", 32, 1);
    program->send(window, "_CORVANE_WINDOW_MESSAGE", 8, 2);
    for (int index = 0; index < count; ++index)
        EXPECT_TRUE(postWindowMessage(window, index, index + 1, -index));
    EXPECT_TRUE(received.waitFor(count));
    const auto messages = received.get();
    ASSERT_EQ(messages.size(), static_cast<size_t>(count));
    for (int index = 0; index < count; ++index)
        ASSERT_EQ(messages[static_cast<size_t>(index)], (Message { index, index + 1, -index }));

    program->close(window);
    EXPECT_TRUE(eventually([&] { return findWindow("AppMain") != noWindow; })) << "somebody destroyed it";
    const auto again = findWindow("AppMain");
    EXPECT_NE(again, window);
    EXPECT_TRUE(postWindowMessage(again, 1, 2, 3));
    EXPECT_TRUE(received.waitFor(count + 1));

    stopWindowMessages();
    EXPECT_TRUE(eventually([&] { return !isWindow(again); }));
    EXPECT_EQ(findWindow("AppMain"), noWindow);
}

/** Programs post faster than the engine works: what waits is bounded, the newest stay, and a line says so once. */
TEST_F(WindowTest, ABusyEngineKeepsTheNewestMessages)
{
    constexpr int sent = 3000;
    struct Engine : IMsgProc
    {
        void onRemoteMessage(RemoteMessage::Ptr) override {}
        void onWindowMessage(juce::int32 message, juce::int32 wParam, juce::int32 lParam) override
        {
            received.handler()(message, wParam, lParam);
        }
        void onPresence(int, bool) override {}
        void onBroadcast(const juce::String&) override {}
        bool isBusy() const override { return busy; }

        Received received;
        std::atomic<bool> busy { true };
    };
    Engine engine;
    Configuration::get().ipcAddress = "unix:path=/no/such/bus";
    IPCMsg::MessageHelper::config(Pubhead::AppMain, IPCMsg::MessageHelper::getDestName);
    MsgSession session;
    session.init(&engine);
    ASSERT_TRUE(eventually([&] { return findWindow("AppMain") != noWindow; }));
    const auto window = findWindow("AppMain");
    for (int index = 0; index < sent; ++index)
        ASSERT_TRUE(postWindowMessage(window, index, 0, 0));
    ASSERT_TRUE(eventually([&] { return log.count("1024 window messages wait: the oldest go") == 1; }));
    EXPECT_TRUE(engine.received.get().empty());
    engine.busy = false;

    const auto messages = [&] { return engine.received.get(); };
    ASSERT_TRUE(eventually([&] { return !messages().empty() && messages().back() == Message { sent - 1, 0, 0 }; }));
    EXPECT_LT(messages().size(), std::size_t { sent });
    EXPECT_TRUE(std::ranges::is_sorted(messages()));
    EXPECT_EQ(log.count("1024 window messages wait"), 1);
    session.close();
    Configuration::get().ipcAddress = {};
}

TEST_F(WindowTest, WithoutADisplayNothingIsFound)
{
    const auto window = program->openTitled("AppRadio");
    ASSERT_EQ(findWindow("AppRadio"), window);
    const auto expectNothing = [&]
    {
        EXPECT_EQ(findWindow("AppRadio"), noWindow);
        EXPECT_FALSE(isWindow(window));
        EXPECT_EQ(windowProcess(window), -1);
        EXPECT_FALSE(postWindowMessage(window, 1, 2, 3));
        EXPECT_FALSE(postWindowMessage(allWindows, 1, 2, 3));
        startWindowMessages("AppMain", [](auto, auto, auto) {});
        showWindow(window, true);
        setForegroundWindow(window);
    };

    EXPECT_TRUE(UIHelper::hasDisplay());
    Configuration::get().display = "none";
    EXPECT_FALSE(UIHelper::hasDisplay());
    expectNothing();
    Configuration::get().display = "auto";
    EXPECT_TRUE(UIHelper::hasDisplay());
    EXPECT_TRUE(log.take().empty());

    const std::string name = std::getenv("DISPLAY");
    setenv("DISPLAY", ":no-such-display", 1);
    expectNothing();
    EXPECT_EQ(log.take().size(), 1u);
    unsetenv("DISPLAY");
    EXPECT_FALSE(UIHelper::hasDisplay());
    expectNothing();
    EXPECT_TRUE(log.take().empty());
    setenv("DISPLAY", name.c_str(), 1);
    EXPECT_EQ(findWindow("AppRadio"), window);
}

/**
    The X server ends under the running engine: one line in the log, and then all is as without a display, until it
    comes back.
*/
TEST_F(WindowTest, ALostDisplayIsReportedOnceAndTakenUpAgain)
{
    XServer ending;
    ASSERT_TRUE(ending.isRunning());
    Received received;
    const auto window = received.openMain();
    ASSERT_NE(window, noWindow);
    ending.stop();

    EXPECT_TRUE(eventually([&] { return log.count("lost the X display") == 1; }));
    EXPECT_EQ(findWindow("AppMain"), noWindow);
    EXPECT_FALSE(postWindowMessage(window, 1, 2, 3));
    EXPECT_FALSE(isWindow(window));
    EXPECT_EQ(log.take().size(), 1u);

    ending.start();
    ASSERT_TRUE(ending.isRunning());
    ASSERT_TRUE(eventually([] { return findWindow("AppMain") != noWindow; }));
    EXPECT_TRUE(postWindowMessage(findWindow("AppMain"), 1, 2, 3));
    EXPECT_TRUE(received.waitFor(1));
    EXPECT_TRUE(log.take().empty());
}
