#pragma once

#include "bench/program/Profile.h"

namespace BenchProgram
{

/** What a source program has around it: its channel to the engine, its screen, the bench's journal, its time. */
class Outside
{
public:
    virtual ~Outside() = default;

    /** To the engine. */
    virtual void post(int what, int arg1, int arg2, Platform::Bundle::Ptr bundle) = 0;
    /** To the engine's window. */
    virtual void postToWindow(int message, int wParam, int lParam) = 0;
    /** To the bench's journal. */
    virtual void report(const char* event, const juce::String& detail) = 0;
    virtual void reportPage(const char* event, int page) = 0;

    virtual void show(int page) = 0;
    /** Takes what was shown last off the screen. */
    virtual void clear() = 0;
    /** The source of the page plays, or none does (NUM_OF_PAGES). */
    virtual void showSource(int page) = 0;
    /** What the shown page says is no longer true. */
    virtual void contentChanged() = 0;
    /** The same once the engine has stored a setting. */
    virtual void contentChangesSoon() = 0;

    /** From now on, unless it is called off, the program quits when the engine is away or silent for too long. */
    virtual void awaitEngine(bool on) = 0;
    virtual void quit() = 0;
};

/**
    A source program as the engine sees it: says hello, asks for its pages, shows and hides them when told, answers the
    heartbeat, confirms, and quits when its source is stopped. What it is about is its profile's. A pure model: what is
    around it carries its messages and brings it the time. One thread.
*/
class ProgramModel : private Host
{
public:
    /** `firstLine` is the value of --command-line, "" for none. `outsideToUse` must outlive it. */
    ProgramModel(int ownType, juce::String firstLine, Outside& outsideToUse);
    ~ProgramModel() override;

    // What it hears.
    void engineIsPresent(bool present);
    void handle(const Platform::RemoteMessage& message);

    // What the user does in its page.
    void choosePage(int page);
    void leavePage(int page);
    void touch(int page, int id) { profile->onTouch(page, id); }
    void touchNothing(int x, int y) { report("touch", "of nothing at " + juce::String(x) + " " + juce::String(y)); }
    PageContent content(int page) const { return profile->content(page); }

    // What the bench orders.
    void setSilent(bool on) { silent = on; }
    bool isSilent() const { return silent; }
    void send(int what, int arg1, int arg2 = 0, Platform::Bundle::Ptr bundle = nullptr) override;
    void changeSetting(int setting, int value) override;
    void changeSetting(int setting, const juce::String& value) override;
    void showOnRemote(const juce::String& line1, const juce::String& line2);
    /** Empty when it was done, else what is wrong with it. */
    std::string order(const juce::StringArray& words) { return profile->onOrder(words); }

    /** The page whose source plays in the front zone, whichever program's it is. */
    void setPlaying(int page);

    int getShownPage() const { return shownPage; }
    int getSource() const override { return source; }
    int getPlaying() const override { return playing; }

private:
    const int appType;
    Outside& outside;
    const std::unique_ptr<Profile> profile;
    juce::String firstCommandLine; ///< kept until the engine is there to be asked for the page
    int shownPage;
    int source;
    int playing;
    bool silent = false;
    bool engineHere = false;

    void sayHello();
    void onCommandLine(const Platform::Bundle::Ptr& bundle);
    void showPage(int page);
    void giveUpPage(int page, const char* change);
    /** The program writes down what it plays, or plays what was written down. */
    void onFavourite(const Platform::RemoteMessage& message);
    void onOwnMessage(const Platform::RemoteMessage& message);

    void postToWindow(int message, int wParam, int lParam) override { outside.postToWindow(message, wParam, lParam); }
    void report(const char* event, const juce::String& detail) override { outside.report(event, detail); }
    void changed() override { outside.contentChanged(); }
};

} // namespace BenchProgram
