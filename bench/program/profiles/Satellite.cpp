// Satellite radio: the tuner that may be there, its channels, and what the unit keeps of them.
#include "bench/console/Script.h"
#include "bench/program/profiles/Profiles.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

#include <algorithm>

namespace BenchProgram
{

using namespace Platform;

namespace
{

/** Sub-codes of RMSG_SXM_EVENT. */
enum Event : int { tunerState = 0, favouritesStored = 3, favouriteShown = 4, readyForPowerOff = 5 };
/** First argument of RMSG_SXM_FAVOURITE that is no favourite. */
constexpr int preparePowerOff = 3;

constexpr int firstChannel = 18;
constexpr int highestNumber = 999; ///< in an order
const juce::StringArray channels { "Harbour Jazz",    "Trade Winds", "Offshore News",
                                   "Classic Rock 21", "Deep Blue",   "Weather at Sea" };

class SatelliteProfile : public Profile
{
public:
    using Profile::Profile;

    void onConnected() override
    {
        host.send(RMSG_SXM_EVENT, tunerState, tuner ? 1 : 0);
        host.send(RMSG_SXM_EVENT, favouritesStored, storedFavourites());
    }

    void onMessage(const RemoteMessage& message) override
    {
        if (message.what == RMSG_SXM_FAVOURITE && message.arg1 == preparePowerOff)
            host.send(RMSG_SXM_EVENT, readyForPowerOff);
        else if (message.what == RMSG_FACTORY_RESET)
            choose(0);
    }

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        if (!tuner)
        {
            content.status = "No tuner";
            content.detail = "The satellite tuner is not connected";
            return content;
        }
        for (int i = 0; i < channels.size(); ++i)
            content.rows.push_back({ i, channels[i], juce::String(firstChannel + i), i == channel });
        content.status = favouriteLabel();
        return content;
    }

    void onTouch(int, int id) override { choose(id); }

    std::string onOrder(const juce::StringArray& words) override
    {
        constexpr int none = -1;
        const auto number = Bench::parseNumber(words[1].toStdString(), 0, highestNumber).value_or(none);
        const bool hasNumber = words.size() == 2 && number != none;
        if (!tuner && words[0] != "in" && words[0] != "out")
            return "no tuner is connected";
        if (words.size() == 1 && (words[0] == "in" || words[0] == "out"))
        {
            tuner = words[0] == "in";
            host.send(RMSG_SXM_EVENT, tunerState, tuner ? 1 : 0);
            host.changed();
        }
        else if (words[0] == "channel" && hasNumber && juce::isPositiveAndBelow(number - firstChannel, channels.size()))
            choose(number - firstChannel);
        else if (words[0] == "favourites" && hasNumber)
            host.send(RMSG_SXM_EVENT, favouritesStored, number);
        else if (words.size() == 1 && words[0] == "favourite")
            host.send(RMSG_SXM_EVENT, favouriteShown);
        else
            return "in, out, channel 18 to " + std::to_string(firstChannel + channels.size() - 1) +
                   ", favourites 0 to " + std::to_string(highestNumber) + ", favourite";
        return {};
    }

    juce::String favouriteLabel() const override { return "Channel " + juce::String(firstChannel + channel); }

    void openFavourites() override { host.send(RMSG_SXM_EVENT, favouriteShown); }

    void favouriteStored(int favourite) override
    {
        host.send(RMSG_SXM_EVENT, favouritesStored, std::max(favourite, storedFavourites()));
    }

    void playFavourite(int favourite) override
    {
        const auto label = VX_GetSetupValueString(favouriteLabelSetting(favourite));
        if (const auto index = label.getTrailingIntValue() - firstChannel;
            juce::isPositiveAndBelow(index, channels.size()))
            choose(index);
    }

private:
    bool tuner = true;
    int channel = 0;

    void choose(int index)
    {
        channel = index;
        host.report("channel", juce::String(firstChannel + channel));
        host.changed();
    }
};

} // namespace

std::unique_ptr<Profile> makeSatelliteProfile(Host& host)
{
    return std::make_unique<SatelliteProfile>(host);
}

} // namespace BenchProgram
