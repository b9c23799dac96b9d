#pragma once

#include "EngineApi/ProgramTimes.h"
#include "bench/program/ControlChannel.h"
#include "bench/program/ProgramModel.h"

#include <juce_events/juce_events.h>

namespace BenchProgram
{

/** What a source program shows. Message thread. */
class Display
{
public:
    virtual ~Display() = default;
    virtual void show(int page) = 0;
    /** Takes what was shown last off the screen. */
    virtual void clear() = 0;
    /** The colours of the night, or of the day. */
    virtual void setNight(bool night) = 0;
    /** The source of the page plays, or none does (NUM_OF_PAGES). */
    virtual void setSource(int page) = 0;
    /** What the shown page says is no longer true. */
    virtual void contentChanged() = 0;
};

/**
    A source program as a process: its model on the message channel and a display. It also quits when the engine stays
    away or silent. On the bench's order it misbehaves. Everything is done on the message thread; the channels' threads
    only hand over.
*/
class SourceProgram : private Platform::IMsgProc, private Outside, private juce::Timer
{
public:
    /** `commandLine` is the value of --command-line, "" for none. */
    SourceProgram(int ownType, const juce::String& commandLine, Display& displayToUse);
    ~SourceProgram() override;

    /** `controlPath` may be "" or nobody's. */
    void start(const std::string& controlPath);

    ProgramModel& getModel() { return model; }

    static constexpr int engineAwayLimitMs = EngineApi::engineAwayMs;

private:
    void onRemoteMessage(Platform::RemoteMessage::Ptr message) override;
    void onWindowMessage(juce::int32 message, juce::int32 wParam, juce::int32 lParam) override;
    void onPresence(int type, bool present) override;
    void onBroadcast(const juce::String& text) override;
    void timerCallback() override; ///< the engine did not come back, or did not answer

    /** Later when the bench wants it slow. */
    void post(int what, int arg1, int arg2, Platform::Bundle::Ptr bundle) override;
    /** Without a display there is no window to post to (reported to the bench). */
    void postToWindow(int message, int wParam, int lParam) override;
    void report(const char* event, const juce::String& detail) override;
    void reportPage(const char* event, int page) override;
    void show(int page) override { display.show(page); }
    void clear() override { display.clear(); }
    void showSource(int page) override { display.setSource(page); }
    void contentChanged() override { display.contentChanged(); }
    void contentChangesSoon() override;
    void awaitEngine(bool on) override;
    void quit() override;

    void onOrder(const nlohmann::json& order);
    /** "did ..." or "refused ..." tells the bench what became of it. */
    void onProfileOrder(const nlohmann::json& order);
    /** Runs it on the message thread while this object lives. */
    void later(std::function<void()> what);

    const int appType;
    const juce::String firstLine;
    Display& display;
    ProgramModel model;
    ControlChannel control;
    Platform::MsgSession session;
    int delayMs = 0;
    /** Handed along by any thread; expired once this object is gone. Ended on the message thread. */
    std::shared_ptr<const bool> alive = std::make_shared<const bool>(true);
    JUCE_DECLARE_NON_COPYABLE(SourceProgram)
};

} // namespace BenchProgram
