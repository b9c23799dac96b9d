// The iPod: on the cable or over Bluetooth, and the internet radio that it may bring along.
#include "bench/program/profiles/Profiles.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SysInfo.h"
#include "platform/settings/SysInfoItems.h"

namespace BenchProgram
{

using namespace Platform;

namespace
{

/** First argument of RMSG_IPOD_DEVICE. */
enum DeviceEvent : int { attached = 0, prepared = 1, detached = 2, wantsRestart = 85 };
/** Of RMSG_IPOD_CONTROL. */
enum Control : int { authenticate = 2, playOverBluetooth = 3, leaveBluetooth = 8 };
constexpr int connectionReport = 1; ///< of RMSG_IPOD_AUDIO_PATH
enum AudioPath : int { digital = 1, analog = 2 };
/** Of WM_MESSAGE_IPOD_DRIVER. */
constexpr int driverMark = 234567;
constexpr int driverConnected = 1;

/** Of sysInfoiPodAuthentication, which this program keeps. */
enum Authenticated : int { nobody = 0, onCable = 1, overBluetooth = 2 };

class iPodProfile : public Profile
{
public:
    using Profile::Profile;

    void onMessage(const RemoteMessage& message) override
    {
        if (message.what != RMSG_IPOD_CONTROL)
            return;
        if (message.arg1 == authenticate)
            onAuthenticate();
        else if (message.arg1 == leaveBluetooth && VX_GetSysInfo(sysInfoiPodAuthentication) == overBluetooth)
            VX_SetSysInfo(sysInfoiPodAuthentication, nobody);
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
        if (path == 0)
        {
            content.status = "No iPod is connected";
            return content;
        }
        content.title = songs.title();
        content.status = songs.isPaused() ? "Paused" : content.status;
        content.detail = path == analog ? "Sound over the AUX input" : "Sound over the cable";
        return content;
    }

    std::string onOrder(const juce::StringArray& words) override
    {
        const auto& value = words[1];
        const bool namesPath = words.size() == 2 && (value == "analog" || value == "digital");
        const auto wanted = value == "analog" ? analog : digital;
        if (words[0] == "connect" && (words.size() == 1 || namesPath))
            connect(wanted);
        else if (words[0] == "path" && path != 0 && namesPath)
            report(wanted);
        else if (words.size() == 1 && words[0] == "disconnect")
            disconnect();
        else if (words.size() == 2 && words[0] == "pandora" && (value == "on" || value == "off"))
            host.send(RMSG_IPOD_DEVICE, prepared, value == "on" ? 1 : 0);
        else if (words.size() == 1 && words[0] == "restart")
            // Answered first: the engine ends this process as soon as it hears it.
            juce::MessageManager::callAsync([this] { host.send(RMSG_IPOD_DEVICE, wantsRestart); });
        else
            return "connect [analog|digital], path analog|digital (needs an iPod), disconnect, pandora on|off, restart";
        return {};
    }

private:
    int path = 0; ///< 0 while nothing is on the cable
    Playlist songs { { "Blue Horizon", "Two Knots", "Lee Shore", "Land Ahead" } };

    void connect(AudioPath wanted)
    {
        path = wanted;
        host.send(WM_MESSAGE_IPOD_DRIVER, driverMark, driverConnected);
        host.send(RMSG_IPOD_DEVICE, attached, 1);
        report(wanted);
    }

    void report(AudioPath wanted)
    {
        path = wanted;
        host.send(RMSG_IPOD_AUDIO_PATH, connectionReport, wanted);
        host.changed();
    }

    void disconnect()
    {
        path = 0;
        VX_SetSysInfo(sysInfoiPodAuthentication, nobody);
        host.send(RMSG_IPOD_DEVICE, detached);
        host.changed();
    }

    void onAuthenticate()
    {
        VX_SetSysInfo(sysInfoiPodAuthentication, path != 0 ? onCable : overBluetooth);
        if (path == 0)
            host.send(RMSG_IPOD_DEVICE, prepared, 1);
    }
};

class PandoraProfile : public Profile
{
public:
    using Profile::Profile;

    void onKey(int key) override
    {
        if (stations.onKey(key))
            host.changed();
    }

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        content.rows = stations.rows();
        return content;
    }

    void onTouch(int, int id) override
    {
        stations.play(id);
        host.changed();
    }

private:
    Playlist stations { { "Sunset Radio", "Island Radio", "Night Watch Radio" } };
};

} // namespace

std::unique_ptr<Profile> makeiPodProfile(Host& host)
{
    return std::make_unique<iPodProfile>(host);
}

std::unique_ptr<Profile> makePandoraProfile(Host& host)
{
    return std::make_unique<PandoraProfile>(host);
}

} // namespace BenchProgram
