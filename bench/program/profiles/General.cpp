// The pages that belong to no source: the lock, the camera, standby and audio off.
#include "EngineApi/KeyCodes.h"
#include "bench/program/profiles/Profiles.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"

namespace BenchProgram
{

using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;

namespace
{

/** First argument of RMSG_ANTITHEFT_EVENT. */
enum LockEvent : int { locked = 1, unlocked = 2 };

const juce::String rightCode = "1234";
constexpr int longestCode = 8;
constexpr int mostTries = 3;

class AntitheftProfile : public Profile
{
public:
    using Profile::Profile;

    void onCommandLine(const AppCommandLine& line) override
    {
        if (line.isFrontShow())
            forget();
    }

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        content.status =
            entered.isNotEmpty() ? juce::String::repeatedString(juce::String::fromUTF8("•"), entered.length()) : prompt;
        content.keypad = true;
        return content;
    }

    void onTouch(int, int id) override
    {
        if (id == keypadEnter)
            enter();
        else if (id == keypadBack)
            entered = entered.dropLastCharacters(1);
        else if (entered.length() < longestCode)
            entered << id;
        host.changed();
    }

    std::string onOrder(const juce::StringArray& words) override
    {
        if (words.size() != 1 || words[0].isEmpty() || !words[0].containsOnly("0123456789") ||
            words[0].length() > longestCode)
            return "a code of up to 8 digits";
        entered = words[0];
        enter();
        host.changed();
        return {};
    }

private:
    juce::String entered;
    juce::String prompt = "Enter the code";
    int tries = 0;

    void forget()
    {
        entered.clear();
        prompt = "Enter the code";
        tries = 0;
    }

    void enter()
    {
        if (entered == rightCode)
        {
            host.report("code", "right");
            host.send(RMSG_ANTITHEFT_EVENT, unlocked);
            // A unit that was not locked has nothing to end; the page goes all the same.
            host.send(RMSG_SOURCE_STOP, 0);
            return forget();
        }
        host.report("code", "wrong");
        entered.clear();
        prompt = "Wrong code, try again";
        if (++tries >= mostTries)
        {
            prompt = "Locked";
            host.send(RMSG_ANTITHEFT_EVENT, locked);
        }
    }
};

class CameraProfile : public Profile
{
public:
    using Profile::Profile;

    void onCommandLine(const AppCommandLine& line) override
    {
        if (line.isFrontShow() && line.hasExtraData())
            signal = line.getExtraData()->getInt("state", 0) != 0;
    }

    void onMessage(const RemoteMessage& message) override
    {
        if (message.what != RMSG_GENERAL_NOTIFY)
            return;
        signal = message.arg1 != 0;
        host.changed();
    }

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        content.status = signal ? "Rear view" : "No signal";
        content.picture = signal ? PageContent::Picture::live : PageContent::Picture::lost;
        return content;
    }

private:
    bool signal = false;
};

class StandbyProfile : public Profile
{
public:
    using Profile::Profile;

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        content.status = "Nothing plays";
        if (page != mbStandby)
            return content;
        content.buttons = { { goOnButton, "Go on" } };
        if (const auto playing = host.getPlaying(); playing != NUM_OF_PAGES && playing != mbAVOff)
            content.status = plainContent(playing, playing).title + " plays on";
        return content;
    }

    void onTouch(int, int) override { goOn(); }

    void onKey(int key) override
    {
        if (key == KEY_RETURN)
            goOn();
    }

private:
    static constexpr int goOnButton = 0;

    /** Back to the page before. */
    void goOn() { host.postToWindow(RMSG_MENU_COMMAND_WINDOW, standbyCommand, leaveStandby); }
};

} // namespace

std::unique_ptr<Profile> makeAntitheftProfile(Host& host)
{
    return std::make_unique<AntitheftProfile>(host);
}

std::unique_ptr<Profile> makeCameraProfile(Host& host)
{
    return std::make_unique<CameraProfile>(host);
}

std::unique_ptr<Profile> makeStandbyProfile(Host& host)
{
    return std::make_unique<StandbyProfile>(host);
}

} // namespace BenchProgram
