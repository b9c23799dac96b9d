// Bluetooth: the module, the phone that is connected to it, and the link over which that phone plays.
#include "EngineApi/KeyCodes.h"
#include "bench/console/Script.h"
#include "bench/program/profiles/Profiles.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

namespace BenchProgram
{

using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;

namespace
{

/** Sub-codes of RMSG_BT_STATE. */
enum State : int {
    moduleState = 1,
    callState = 2,
    signalState = 3,
    batteryState = 4,
    pairedListState = 7,
    sppState = 8,
    pandoraState = 9,
    wantsSetup = 13,
    wantsAudioPage = 15
};
enum ModuleState : int { disconnected = 1, connected = 2 };
enum CallState : int { calling = 8, moduleOn = 9 };
enum LinkState : int { linkOpen = 0, linkClosed = 1 };

/** First argument of RMSG_BT_CONTROL. */
enum Control : int { switchOff = 2, switchOn = 7 };
/** Of RMSG_BT_LINK; the link is asked for in the lower half of the second argument. */
constexpr int linkRequest = 1;
enum LinkRequest : int { openLink = 1, closeLink = 5 };

constexpr int highestNumber = 255; ///< in an order

const juce::StringArray knownPhones { "Skipper's phone", "Galley tablet" };
enum ButtonId : int { disconnectButton = 100, hangUpButton = 101, audioButton = 102, answerButton = 103 };

class BluetoothProfile : public Profile
{
public:
    using Profile::Profile;

    void onCommandLine(const AppCommandLine& line) override
    {
        const auto extra = line.getExtraData();
        deviceList = extra != nullptr && extra->getBool("gotodevicelist", false);
    }

    void onMessage(const RemoteMessage& message) override
    {
        if (message.what == RMSG_BT_CONTROL && message.arg1 == switchOn && phone.isNotEmpty())
            host.send(RMSG_BT_STATE, moduleState, connected); // of an engine before
        else if (message.what == RMSG_BT_CONTROL && message.arg1 == switchOn)
            host.send(RMSG_BT_STATE, callState, moduleOn);
        else if (message.what == RMSG_BT_CONTROL && message.arg1 == switchOff)
            disconnect();
        else if (message.what == RMSG_BT_LINK && message.arg1 == linkRequest)
            onLinkRequest(message.arg2 & 0xffff);
        else if (message.what == RMSG_FACTORY_RESET)
            disconnect();
        else if (message.what == RMSG_N2K_PGN)
            host.send(RMSG_BT_STATE, wantsAudioPage); // a display on the boat's network wants the phone's music
        host.changed();
    }

    void onKey(int key) override
    {
        if (songs.onKey(key))
            host.changed();
    }

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        if (page == mbBTAudio && phone.isNotEmpty())
        {
            content.title = songs.title();
            content.status = phone;
            content.detail = songs.isPaused() ? "Paused" : "";
            return content;
        }
        content.status = phone.isEmpty() ? "No phone is connected" : phone;
        if (caller.isNotEmpty())
        {
            content.title = caller;
            content.status = (talking ? "In a call, " : "Incoming call, ") + phone;
            if (!talking)
                content.buttons.push_back({ answerButton, "Answer", true });
            content.buttons.push_back({ hangUpButton, "Hang up" });
        }
        else if (phone.isEmpty() || deviceList)
            for (int i = 0; i < knownPhones.size(); ++i)
                content.rows.push_back(
                    { i, knownPhones[i], knownPhones[i] == phone ? "Connected" : "", knownPhones[i] == phone });
        else
            content.buttons = { { audioButton, "Music" }, { disconnectButton, "Disconnect" } };
        return content;
    }

    void onTouch(int, int id) override
    {
        if (id == disconnectButton)
            disconnect();
        else if (id == answerButton)
            answer();
        else if (id == hangUpButton)
            hangUp();
        else if (id == audioButton)
            host.send(RMSG_BT_STATE, wantsAudioPage);
        else
            connect(knownPhones[id]);
    }

    std::string onOrder(const juce::StringArray& words) override
    {
        const auto& what = words[0];
        const auto rest = words.joinIntoString(" ", 1);
        const auto number = Bench::parseNumber(rest.toStdString(), 0, highestNumber);
        if (what == "connect")
            return connect(rest.isNotEmpty() ? rest : knownPhones[0]) ? "" : "Bluetooth is off";
        if (const auto missing = whatIsMissing(what); !missing.empty())
            return missing;
        if (what == "disconnect" && rest.isEmpty())
            disconnect();
        else if (what == "call")
            call(rest.isNotEmpty() ? rest : juce::String("Marina office"));
        else if (what == "answer" && rest.isEmpty())
            answer();
        else if (what == "hang-up" && rest.isEmpty())
            hangUp();
        else if (what == "paired" && rest.isEmpty())
            host.send(RMSG_BT_STATE, pairedListState);
        else if (what == "link" && (rest == "open" || rest == "closed"))
            setLink(rest == "open");
        else if (what == "pandora" && (rest == "on" || rest == "off"))
            host.send(RMSG_BT_STATE, pandoraState, rest == "on" ? linkOpen : linkClosed);
        else if ((what == "signal" || what == "battery") && number)
            host.send(RMSG_BT_STATE, what == "signal" ? signalState : batteryState, *number);
        else if (what == "audio" && rest.isEmpty())
            host.send(RMSG_BT_STATE, wantsAudioPage);
        else if (what == "setup" && rest.isEmpty())
            host.send(RMSG_BT_STATE, wantsSetup);
        else
            return "connect [NAME], disconnect, call [NAME], answer, hang-up, paired, link open|closed, "
                   "pandora on|off, signal N, battery N (0 to " +
                   std::to_string(highestNumber) + "), audio, setup";
        return {};
    }

private:
    juce::String phone;  ///< that is connected
    juce::String caller; ///< from the first ring on
    bool talking = false;
    bool deviceList = false;
    Playlist songs { { "Evening Tide", "Northern Light", "Slack Water" } };

    /** False, with nothing done, while Bluetooth is switched off. */
    bool connect(const juce::String& name)
    {
        if (VX_GetSetupValueInt(bluetoothSetting) == 0)
        {
            host.report("bluetooth", "off");
            return false;
        }
        phone = name;
        deviceList = false;
        host.send(RMSG_BT_STATE, moduleState, connected);
        host.changeSetting(bluetoothNameSetting, name);
        host.changed();
        return true;
    }

    std::string whatIsMissing(const juce::String& order) const
    {
        if ((order == "call" || order == "disconnect") && phone.isEmpty())
            return "no phone is connected";
        if (order == "answer" && caller.isEmpty())
            return "nobody calls";
        return {};
    }

    void disconnect()
    {
        if (phone.isEmpty())
            return;
        phone.clear();
        endCall();
        host.send(RMSG_BT_STATE, moduleState, disconnected);
        host.changed();
    }

    void call(const juce::String& who)
    {
        caller = who;
        talking = false;
        host.send(RMSG_BT_STATE, callState, calling);
        host.changed();
    }

    void answer()
    {
        talking = true;
        host.report("call", "answered");
        host.changed();
    }

    void endCall()
    {
        caller.clear();
        talking = false;
    }

    /** The screen goes back to what plays. */
    void hangUp()
    {
        endCall();
        host.postToWindow(RMSG_MENU_COMMAND_WINDOW, sourceCommand, 0);
        host.changed();
    }

    void onLinkRequest(int request)
    {
        if (request == openLink && phone.isNotEmpty())
            setLink(true);
        else if (request == closeLink)
            setLink(false);
    }

    void setLink(bool open) { host.send(RMSG_BT_STATE, sppState, open ? linkOpen : linkClosed); }
};

} // namespace

std::unique_ptr<Profile> makeBluetoothProfile(Host& host)
{
    return std::make_unique<BluetoothProfile>(host);
}

} // namespace BenchProgram
