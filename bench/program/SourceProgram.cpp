#include "bench/program/SourceProgram.h"

#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/screen/Window.h"

#include <cmath>
#include <csignal>
#include <nlohmann/json.hpp>
#include <sys/resource.h>

namespace BenchProgram
{

using namespace Platform;
using namespace Pubhead;

namespace
{

/** The engine stores a setting sooner than this, in milliseconds. */
constexpr int settingStoredMs = 150;

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

SourceProgram::SourceProgram(int ownType, const juce::String& commandLine, Display& displayToUse)
    : appType(ownType)
    , firstLine(commandLine)
    , display(displayToUse)
    , model(ownType, commandLine, *this)
{
}

SourceProgram::~SourceProgram()
{
    session.close();
    control.close();
}

void SourceProgram::start(const std::string& controlPath)
{
    control.open(
        controlPath, [this](const nlohmann::json& order) { later([this, order] { onOrder(order); }); },
        [this] { later([this] { quit(); }); });
    control.report({ { "event", "hello" }, { "app", appType }, { "commandLine", firstLine.toStdString() } });
    IPCMsg::MessageHelper::config(appType, IPCMsg::MessageHelper::getDestName);
    awaitEngine(true);
    if (session.init(this) && IPCMsg::MessageHelper::isPresent(AppMain))
        model.engineIsPresent(true);
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
            model.handle(*message);
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
        later([this, present] { model.engineIsPresent(present); });
}

void SourceProgram::onBroadcast(const juce::String&)
{
    // "showWindow" and "hideWindow" are for the engine.
}

void SourceProgram::timerCallback()
{
    quit();
}

void SourceProgram::onOrder(const nlohmann::json& order)
{
    const auto name = order.value("order", std::string());
    if (name == "silent")
    {
        const bool silent = order.value("on", true);
        model.setSilent(silent);
        report("fault", silent ? "silent" : "none");
    }
    else if (name == "slow")
    {
        delayMs = order.value("ms", 0);
        report("fault", delayMs > 0 ? "slow" : "none");
    }
    else if (name == "send")
        model.send(order.value("what", 0), order.value("arg1", 0), order.value("arg2", 0));
    else if (name == "window")
        postToWindow(order.value("what", 0), order.value("arg1", 0), order.value("arg2", 0));
    else if (name == "text")
        model.showOnRemote(juce::String::fromUTF8(order.value("line1", std::string()).c_str()),
                           juce::String::fromUTF8(order.value("line2", std::string()).c_str()));
    else if (name == "set" && order.at("value").is_number_integer())
        model.changeSetting(order.value("setting", 0), order.at("value").get<int>());
    else if (name == "set")
        model.changeSetting(order.value("setting", 0),
                            juce::String::fromUTF8(order.at("value").get<std::string>().c_str()));
    else if (name == "surroundings")
    {
        display.setNight(order.value("night", false));
        model.setPlaying(order.value("plays", int { NUM_OF_PAGES }));
    }
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
    const auto wrong = model.order(juce::StringArray::fromTokens(text, " ", ""));
    report(wrong.empty() ? "did" : "refused", wrong.empty() ? text : juce::String(wrong));
}

void SourceProgram::contentChangesSoon()
{
    juce::Timer::callAfterDelay(settingStoredMs,
                                [watched = std::weak_ptr<const bool>(alive), this]
                                {
                                    if (!watched.expired())
                                        contentChanged();
                                });
}

void SourceProgram::postToWindow(int message, int wParam, int lParam)
{
    if (!Platform::postWindowMessage(Platform::findWindow(appTypeName(AppMain)), message, wParam, lParam))
        report("window-message-failed", juce::String(message));
}

void SourceProgram::awaitEngine(bool on)
{
    if (on)
        startTimer(engineAwayLimitMs);
    else
        stopTimer();
}

void SourceProgram::post(int what, int arg1, int arg2, Bundle::Ptr bundle)
{
    const auto postNow = [what, arg1, arg2, bundle = std::move(bundle)]
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
    runAt(juce::Time::getMillisecondCounterHiRes() + delayMs, postNow);
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
