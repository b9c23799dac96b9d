#pragma once

#include "bench/program/PageContent.h"
#include "platform/base/CommandLine.h"
#include "platform/channel/Ipc.h"

#include <memory>
#include <string>

namespace BenchProgram
{

/** What a profile does to the world. Message thread. */
class Host
{
public:
    virtual ~Host() = default;
    /** To the engine, unless the bench wants the program silent; later when it wants it slow. */
    virtual void send(int what, int arg1, int arg2 = 0, Platform::Bundle::Ptr bundle = nullptr) = 0;
    virtual void changeSetting(int setting, int value) = 0;
    virtual void changeSetting(int setting, const juce::String& value) = 0;
    /** To the engine's window; without a display there is none (reported to the bench). */
    virtual void postToWindow(int message, int wParam, int lParam) = 0;
    /** To the bench's journal. */
    virtual void report(const char* event, const juce::String& detail) = 0;
    /** What the pages show is no longer true. */
    virtual void changed() = 0;
    /** The page whose source plays, NUM_OF_PAGES when none of this program's does. */
    virtual int getSource() const = 0;
    /** The page whose source plays in the front zone, whichever program's it is; NUM_OF_PAGES when none does. */
    virtual int getPlaying() const = 0;
};

/**
    What one source program knows, says and shows, besides coming and going as every program does. Each has one; those
    with nothing of their own use this class as it is. Message thread.
*/
class Profile
{
public:
    explicit Profile(Host& hostToUse)
        : host(hostToUse)
    {
    }
    virtual ~Profile() = default;
    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;

    /** The engine knows the program from now on. */
    virtual void onConnected() {}
    virtual void onCommandLine(const Platform::AppCommandLine&) {}
    /** Messages that are this program's alone. */
    virtual void onMessage(const Platform::RemoteMessage&) {}
    virtual void onKey(int key) { juce::ignoreUnused(key); }
    /** What the bench wants, in words ("connect analog"). Empty when it was done, else what is wrong with it. */
    virtual std::string onOrder(const juce::StringArray& words);

    virtual PageContent content(int page) const;
    /** Something on the page was touched. */
    virtual void onTouch(int page, int id) { juce::ignoreUnused(page, id); }
    /** What a favourite of this moment is called. */
    virtual juce::String favouriteLabel() const;
    /** The unit leaves it to the program to open the favourites. */
    virtual void openFavourites() {}
    /** It is kept as this favourite, 1 to 16, from now on. */
    virtual void favouriteStored(int favourite) { juce::ignoreUnused(favourite); }
    /** A favourite is to play, 1 to 16. Its page is in front, or comes there. */
    virtual void playFavourite(int favourite) { juce::ignoreUnused(favourite); }

protected:
    Host& host;
};

/** Title, and whether the page's source plays. */
PageContent plainContent(int page, int source);

} // namespace BenchProgram
