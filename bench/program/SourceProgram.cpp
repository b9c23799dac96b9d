#include "bench/program/SourceProgram.h"

#include "EngineApi/KeyCodes.h"
#include "bench/program/Describe.h"
#include "bench/program/profiles/Profiles.h"
#include "bench/text/Names.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/screen/Window.h"
#include "platform/settings/SetupIndex.h"

#include <cmath>
#include <csignal>
#include <nlohmann/json.hpp>
#include <sys/resource.h>

namespace BenchProgram
{

using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;

namespace
{

/** First argument of the favourite messages. */
enum FavouriteMode { storeFavourite = 0, playFavourite = 1, openFavourites = 2 };
/** Second argument of RMSG_SETTING_CHANGED. */
constexpr int integerSetting = 1;
constexpr int textSetting = 0;
/** The engine stores a setting sooner than this, in milliseconds. */
constexpr int settingStoredMs = 150;

juce::String keyText(int key, int argument)
{
    return Bench::keyName(key) + (argument != 0 ? " " + std::to_string(argument) : "");
}

/** Runs it at this time of the millisecond counter, never before: the toolkit's timers may fire up to 100 ms early. */
void runAt(double time, const std::function<void()>& what)
{
    const auto left = juce::roundToInt(std::ceil(time - juce::Time::getMillisecondCounterHiRes()));
    if (left <= 0)
        what();
    else
        juce::Timer::callAfterDelay(left, [time, what] { runAt(time, what); });
}

} // namespace

SourceProgram::SourceProgram(int ownType, Display& displayToUse)
    : appType(ownType)
    , display(displayToUse)
    , profile(makeProfile(ownType, *this))
    , shownPage(NUM_OF_PAGES)
    , source(NUM_OF_PAGES)
{
}

SourceProgram::~SourceProgram()
{
    session.close();
    control.close();
}

void SourceProgram::start(const juce::String& commandLine, const std::string& controlPath)
{
    control.open(
        controlPath, [this](const nlohmann::json& order) { later([this, order] { onOrder(order); }); },
        [this] { later([this] { quit(); }); });
    control.report({ { "event", "hello" }, { "app", appType }, { "commandLine", commandLine.toStdString() } });
    IPCMsg::MessageHelper::config(appType, IPCMsg::MessageHelper::getDestName);
    startTimer(engineAwayLimitMs);
    firstCommandLine = commandLine;
    if (session.init(this) && IPCMsg::MessageHelper::isPresent(AppMain))
        onEnginePresence(true);
}

void SourceProgram::later(std::function<void()> what)
{
    juce::MessageManager::callAsync(
        [watched = std::weak_ptr<const bool>(alive), what = std::move(what)]
        {
            if (!watched.expired())
                what();
        });
}

void SourceProgram::onRemoteMessage(RemoteMessage::Ptr message)
{
    later(
        [this, message]
        {
            handle(*message);
            RemoteMessage::recycle(message);
        });
}

void SourceProgram::onWindowMessage(juce::int32, juce::int32, juce::int32)
{
    // Window messages are for the engine and the navigation program.
}

void SourceProgram::onPresence(int type, bool present)
{
    if (type == AppMain)
        later([this, present] { onEnginePresence(present); });
}

void SourceProgram::onBroadcast(const juce::String&)
{
    // "showWindow" and "hideWindow" are for the engine.
}

void SourceProgram::onEnginePresence(bool present)
{
    if (present == std::exchange(engineHere, present))
        return;
    // The engine has this long to come back, or to answer the hello: the name may be another's for it. Meanwhile the
    // music plays on and the page stays, as it may only be the bus that has gone.
    startTimer(engineAwayLimitMs);
    if (present)
    {
        sayHello();
        if (const auto line = std::exchange(firstCommandLine, {}); line.isNotEmpty())
            onCommandLine(CmdLineHelper::parseCommandLine(line));
    }
}

void SourceProgram::timerCallback()
{
    quit();
}

void SourceProgram::sayHello()
{
    send(RMSG_APP_HELLO, appType);
}

void SourceProgram::handle(const RemoteMessage& message)
{
    switch (message.what)
    {
    case RMSG_ENGINE_STARTED:
        // Who shows what is the engine's decision; a new one starts with an empty screen.
        if (shownPage != NUM_OF_PAGES)
            hidePage(shownPage, "hidden");
        sayHello();
        break;
    case RMSG_APP_HELLO_ACK:
        stopTimer();
        report("connected", {});
        profile->onConnected();
        break;
    case RMSG_HEARTBEAT:
        report("heartbeat", {});
        send(RMSG_HEARTBEAT_REPLY, appType);
        break;
    case RMSG_COMMAND_LINE:
        onCommandLine(message.bundle);
        break;
    case RMSG_PAGE_SHOW:
        showPage(message.arg1);
        send(RMSG_PAGE_SHOW_READY, message.arg1);
        break;
    case RMSG_PAGE_HIDE:
        hidePage(message.arg1, "hidden");
        send(RMSG_PAGE_HIDE_READY, message.arg1);
        break;
    case RMSG_PAGE_COVERED:
        hidePage(message.arg1, "covered");
        break;
    case RMSG_SOURCE_STOP:
        report("stop", {});
        quit();
        break;
    case RMSG_PAGE_NOTIFY:
        report("power-off", pageName(message.arg1));
        send(RMSG_STATE_TO_SYSTEM, message.arg1);
        break;
    case RMSG_KEY:
        report("key", keyText(message.arg1, message.arg2));
        profile->onKey(message.arg1);
        break;
    case RMSG_FAVOURITE:
    case RMSG_SXM_FAVOURITE:
    case RMSG_DAB_FAVOURITE:
        onFavourite(message);
        break;
    default:
        onOwnMessage(message);
        break;
    }
}

void SourceProgram::onCommandLine(const Bundle::Ptr& bundle)
{
    const auto line = RemoteObjFormat::generateCommandLine(bundle);
    if (line == nullptr)
    {
        report("command-line", "malformed");
        return;
    }
    report("command-line", describe(*line));
    if (line->isSourceEnter())
        display.setSource(source = line->getPage());
    if (line->isSourceExit() && line->getPage() == source)
        display.setSource(source = NUM_OF_PAGES);
    profile->onCommandLine(*line);
    if (const auto extra = line->getExtraData(); extra != nullptr)
        if (const auto favourite = extra->getInt("Favourite", 0); favourite != 0)
            profile->playFavourite(favourite);
    if (line->isFrontShow())
        send(RMSG_PAGE_REQUEST_SHOW, line->getPage());
    // The page stays on the screen until the next one is ready; this only says that the order has arrived.
    if (line->isPageHide() && line->getPage() == shownPage && shownPage != NUM_OF_PAGES)
    {
        reportPage("confirmed", shownPage);
        send(RMSG_PAGE_TOP_SHOWN, shownPage);
    }
}

void SourceProgram::onOwnMessage(const RemoteMessage& message)
{
    report("message", describe(message));
    profile->onMessage(message);
}

void SourceProgram::onFavourite(const RemoteMessage& message)
{
    const auto favourite = message.arg2;
    const juce::String number(favourite);
    switch (message.arg1)
    {
    case storeFavourite:
    {
        const auto label = profile->favouriteLabel();
        report("favourite", "stored " + number + " " + label);
        changeSetting(favouritePageSetting(favourite), source != NUM_OF_PAGES ? source : shownPage);
        changeSetting(favouriteLabelSetting(favourite), label);
        profile->favouriteStored(favourite);
        break;
    }
    case playFavourite:
        report("favourite", "played " + number);
        profile->playFavourite(favourite);
        break;
    case openFavourites:
        report("favourite", "opened at " + number);
        profile->openFavourites();
        break;
    default:
        onOwnMessage(message);
        break;
    }
}

void SourceProgram::showPage(int page)
{
    shownPage = page;
    display.show(page);
    reportPage("shown", page);
}

void SourceProgram::hidePage(int page, const char* change)
{
    if (page == shownPage)
    {
        shownPage = NUM_OF_PAGES;
        display.hide();
    }
    reportPage(change, page);
}

void SourceProgram::onOrder(const nlohmann::json& order)
{
    const auto name = order.value("order", std::string());
    if (name == "silent")
    {
        silent = order.value("on", true);
        report("fault", silent ? "silent" : "none");
    }
    else if (name == "slow")
    {
        delayMs = order.value("ms", 0);
        report("fault", delayMs > 0 ? "slow" : "none");
    }
    else if (name == "send")
        send(order.value("what", 0), order.value("arg1", 0), order.value("arg2", 0));
    else if (name == "window")
        postToWindow(order.value("what", 0), order.value("arg1", 0), order.value("arg2", 0));
    else if (name == "text")
        showOnRemote(juce::String::fromUTF8(order.value("line1", std::string()).c_str()),
                     juce::String::fromUTF8(order.value("line2", std::string()).c_str()));
    else if (name == "set" && order.at("value").is_number_integer())
        changeSetting(order.value("setting", 0), order.at("value").get<int>());
    else if (name == "set")
        changeSetting(order.value("setting", 0), juce::String::fromUTF8(order.at("value").get<std::string>().c_str()));
    else if (name == "do")
        onProfileOrder(order);
    else if (name == "exit")
        quit();
    else if (name == "hang")
        std::raise(SIGSTOP);
    else if (name == "crash")
    {
        const rlimit noDump { 0, 0 };
        ::setrlimit(RLIMIT_CORE, &noDump);
        std::signal(SIGSEGV, SIG_DFL);
        std::raise(SIGSEGV);
    }
}

void SourceProgram::onProfileOrder(const nlohmann::json& order)
{
    const auto text = juce::String::fromUTF8(order.value("words", std::string()).c_str());
    const auto wrong = profile->onOrder(juce::StringArray::fromTokens(text, " ", ""));
    report(wrong.empty() ? "did" : "refused", wrong.empty() ? text : juce::String(wrong));
}

void SourceProgram::changeSetting(int setting, int value)
{
    send(RMSG_SETTING_CHANGED, setting, integerSetting, RemoteObjFormat::formatInt(value));
    settingChanges();
}

void SourceProgram::changeSetting(int setting, const juce::String& value)
{
    send(RMSG_SETTING_CHANGED, setting, textSetting, RemoteObjFormat::formatString(value));
    settingChanges();
}

void SourceProgram::settingChanges()
{
    juce::Timer::callAfterDelay(settingStoredMs,
                                [watched = std::weak_ptr<const bool>(alive), this]
                                {
                                    if (!watched.expired())
                                        changed();
                                });
}

void SourceProgram::showOnRemote(const juce::String& line1, const juce::String& line2)
{
    const auto texts = Bundle::obtain();
    texts->putString("string1", line1);
    texts->putInt("pos1", 0);
    texts->putString("string2", line2);
    texts->putInt("pos2", 0);
    send(RMSG_WIRED_REMOTE_TEXT, 0, 0, texts);
}

void SourceProgram::postToWindow(int message, int wParam, int lParam)
{
    if (!Platform::postWindowMessage(Platform::findWindow(appTypeName(AppMain)), message, wParam, lParam))
        report("window-message-failed", juce::String(message));
}

void SourceProgram::choosePage(int page)
{
    if (page == mbEQ)
        send(RMSG_EQ_PAGE_SHOW, 0);
    else
        send(RMSG_APP_EVENT, menuPageChosen, page);
}

void SourceProgram::leavePage(int page)
{
    if (page == mbEQ)
        send(RMSG_EQ_PAGE_HIDE, 0);
    else if (page == mbBTPhone)
        postToWindow(RMSG_MENU_COMMAND_WINDOW, sourceCommand, 0);
    else if (Bench::isOnlyPage(page))
        send(RMSG_SOURCE_STOP, 0);
    else
        send(RMSG_APP_EVENT, menuPageChosen, Bench::isRearZone(page) ? mbRearOff : mbAVOff);
}

void SourceProgram::send(int what, int arg1, int arg2, Bundle::Ptr bundle)
{
    if (silent)
        return;
    const auto post = [what, arg1, arg2, bundle = std::move(bundle)]
    {
        const auto message = RemoteMessage::obtain();
        message->what = what;
        message->arg1 = arg1;
        message->arg2 = arg2;
        message->bundle = bundle;
        // Without an engine there is nobody to tell; its return brings a new hello.
        IPCMsg::MessageHelper::postMessage(AppMain, message);
        RemoteMessage::recycle(message);
    };
    runAt(juce::Time::getMillisecondCounterHiRes() + delayMs, post);
}

void SourceProgram::report(const char* event, const juce::String& detail)
{
    nlohmann::json message { { "event", event } };
    if (detail.isNotEmpty())
        message["detail"] = detail.toStdString();
    control.report(message);
}

void SourceProgram::reportPage(const char* event, int page)
{
    control.report({ { "event", event }, { "page", page } });
}

void SourceProgram::quit()
{
    juce::MessageManager::getInstance()->stopDispatchLoop();
}

} // namespace BenchProgram
