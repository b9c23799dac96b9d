#pragma once

#include "bench/program/ControlChannel.h"
#include "bench/program/Profile.h"

#include <juce_events/juce_events.h>

namespace BenchProgram
{

/** What a source program shows. Message thread. */
class Display
{
public:
    virtual ~Display() = default;
    virtual void show(int page) = 0;
    virtual void hide() = 0;
    /** The source of the page plays, or none does (NUM_OF_PAGES). */
    virtual void setSource(int page) = 0;
    /** What the shown page says is no longer true. */
    virtual void contentChanged() = 0;
};

/**
    A source program as the engine sees it: says hello, asks for its pages, shows and hides them when told, answers the
    heartbeat, confirms, and quits when its source is stopped or the engine stays away or silent. What it is about is
    its profile's. On the bench's order it misbehaves. Everything is done on the message thread; the channels' threads
    only hand over.
*/
class SourceProgram : private Platform::IMsgProc, private Host, private juce::Timer
{
public:
    SourceProgram(int ownType, Display& displayToUse);
    ~SourceProgram() override;

    /** `commandLine` is the value of --command-line, "" for none. `controlPath` may be "" or nobody's. */
    void start(const juce::String& commandLine, const std::string& controlPath);

    // What the user does in the page.
    void choosePage(int page);
    void leavePage(int page);
    void touch(int page, int id) { profile->onTouch(page, id); }
    PageContent content(int page) const { return profile->content(page); }

    static constexpr int engineAwayLimitMs = 10'000;

private:
    void onRemoteMessage(Platform::RemoteMessage::Ptr message) override;
    void onWindowMessage(juce::int32 message, juce::int32 wParam, juce::int32 lParam) override;
    void onPresence(int type, bool present) override;
    void onBroadcast(const juce::String& text) override;
    void timerCallback() override; ///< the engine did not come back, or did not answer

    void handle(const Platform::RemoteMessage& message);
    void onEnginePresence(bool present);
    void onCommandLine(const Platform::Bundle::Ptr& bundle);
    void onOrder(const nlohmann::json& order);
    void showPage(int page);
    void hidePage(int page, const char* change);
    void sayHello();
    /** The program writes down what it plays, or plays what was written down. */
    void onFavourite(const Platform::RemoteMessage& message);
    void onOwnMessage(const Platform::RemoteMessage& message);
    /** "did ..." or "refused ..." tells the bench what became of it. */
    void onProfileOrder(const nlohmann::json& order);

    void send(int what, int arg1, int arg2 = 0, Platform::Bundle::Ptr bundle = nullptr) override;
    void changeSetting(int setting, int value) override;
    void changeSetting(int setting, const juce::String& value) override;
    void postToWindow(int message, int wParam, int lParam) override;
    void report(const char* event, const juce::String& detail) override;
    void changed() override { display.contentChanged(); }
    int getSource() const override { return source; }

    void showOnRemote(const juce::String& line1, const juce::String& line2);
    /** What the pages show of the setting is true when the engine has stored it. */
    void settingChanges();
    void reportPage(const char* event, int page);
    void quit();
    /** Runs it on the message thread while this object lives. */
    void later(std::function<void()> what);

    const int appType;
    Display& display;
    const std::unique_ptr<Profile> profile;
    ControlChannel control;
    Platform::MsgSession session;
    int shownPage;
    int source;
    bool silent = false;
    int delayMs = 0;
    bool engineHere = false;
    juce::String firstCommandLine; ///< kept until the engine is there to be asked for the page
    /** Handed along by any thread; expired once this object is gone. Ended on the message thread. */
    std::shared_ptr<const bool> alive = std::make_shared<const bool>(true);
    JUCE_DECLARE_NON_COPYABLE(SourceProgram)
};

} // namespace BenchProgram
