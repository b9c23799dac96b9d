// The radio: three bands of one tuner, which tells where it is and what the station says.
#include "bench/console/Script.h"
#include "bench/program/profiles/Profiles.h"
#include "platform/base/Pubhead.h"
#include "platform/base/Utf8.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

#include <algorithm>
#include <array>
#include <optional>

namespace BenchProgram
{

using namespace Platform;
using namespace Pubhead;

namespace
{

/** Keys of the bodies in RMSG_RADIO_NOTIFY. */
enum BodyKey : int {
    bodyFrequency = 0,
    bodyBand = 2,
    bodyName = 5,
    bodyText = 6,
    bodyStereo = 20,
    bodyRegion = 33,
    bodySensitivity = 34
};

/** First argument of RMSG_RADIO_CONTROL. */
enum Control : int {
    changeRegion = 2,
    seekUp = 5,
    seekDown = 6,
    stepUp = 7,
    stepDown = 8,
    setFrequency = 16,
    setSensitivity = 22,
    wantsReports = 255
};

/** First argument of RMSG_RADIO_EVENT. */
enum Event : int { favouritesStored = 8, receptionTest = 10 };

enum Band : int { fm, am, weather, bandCount };
constexpr std::array bandPages { mbFM, mbAM, mbWB };
constexpr int receptionButton = 1000;
constexpr int highestNumber = 100'000; ///< in an order: above every frequency
constexpr int unitsPerMHz = 100;       ///< on FM

class RadioProfile : public Profile
{
public:
    using Profile::Profile;

    void onConnected() override { host.send(RMSG_RADIO_EVENT, favouritesStored, storedFavourites()); }

    void onCommandLine(const AppCommandLine& line) override
    {
        if (!line.isSourceEnter())
            return;
        // The station of another band has not said its name yet.
        const auto entered = bandOf(line.getPage());
        if (std::exchange(band, entered) != entered)
            forgetStation();
        // The tuner goes to the band, and what was said while nobody listened is handed over.
        host.send(RMSG_RADIO_CONTROL, wantsReports);
    }

    void onMessage(const RemoteMessage& message) override
    {
        if (message.what != RMSG_RADIO_NOTIFY || message.bundle == nullptr)
            return;
        for (const auto& body : message.bundle->getBundleList("bodies"))
            takeBody(*body);
        host.changed();
    }

    PageContent content(int page) const override
    {
        PageContent content;
        const auto shown = bandOf(page);
        content.title = frequencyText(shown) + (shown == fm ? " MHz" : shown == am ? " kHz" : "");
        if (shown == weather)
            content.title = "Channel " + content.title;
        content.status = name.isNotEmpty() && shown == band ? name : plainContent(page, host.getSource()).status;
        content.detail = shown == band ? text : juce::String();
        if (testing)
            content.detail = "Sensitivity " + juce::String(sensitivity) + (stereo ? ", stereo" : ", mono");
        content.buttons = { { seekDown, "Seek down" },
                            { stepDown, "Step down" },
                            { stepUp, "Step up" },
                            { seekUp, "Seek up" },
                            { receptionButton, "Reception", testing } };
        return content;
    }

    void onTouch(int, int id) override
    {
        if (id == receptionButton)
            test(!testing);
        else
            host.send(RMSG_RADIO_CONTROL, id);
    }

    std::string onOrder(const juce::StringArray& words) override
    {
        constexpr auto usage = "seek up|down, step up|down, tune NUMBER, region N, sensitivity N, reception on|off";
        const auto& what = words[0];
        const auto& value = words[1];
        const auto number = Bench::parseNumber(value.toStdString(), 0, highestNumber);
        const bool up = value == "up";
        if (words.size() != 2)
            return usage;
        if (what == "seek" && (up || value == "down"))
            host.send(RMSG_RADIO_CONTROL, up ? seekUp : seekDown);
        else if (what == "step" && (up || value == "down"))
            host.send(RMSG_RADIO_CONTROL, up ? stepUp : stepDown);
        else if (what == "tune" && number.value_or(0) > 0)
            host.send(RMSG_RADIO_CONTROL, setFrequency, *number);
        else if (what == "region" && number)
            host.send(RMSG_RADIO_CONTROL, changeRegion, *number);
        else if (what == "sensitivity" && number)
            host.send(RMSG_RADIO_CONTROL, setSensitivity, *number);
        else if (what == "reception" && (value == "on" || value == "off"))
            test(value == "on");
        else
            return usage;
        return {};
    }

    juce::String favouriteLabel() const override { return frequencyText(band); }

    void favouriteStored(int favourite) override
    {
        host.send(RMSG_RADIO_EVENT, favouritesStored, std::max(favourite, storedFavourites()));
    }

    void playFavourite(int favourite) override
    {
        const auto label = VX_GetSetupValueString(favouriteLabelSetting(favourite));
        if (const auto frequency = frequencyOf(label))
            host.send(RMSG_RADIO_CONTROL, setFrequency, *frequency);
    }

private:
    int band = fm;
    std::array<int, bandCount> frequencies {};
    juce::String name, text;
    int sensitivity = 0;
    bool stereo = false;
    bool testing = false;

    static int bandOf(int page)
    {
        const auto found = std::find(bandPages.begin(), bandPages.end(), page);
        return found != bandPages.end() ? static_cast<int>(found - bandPages.begin()) : static_cast<int>(fm);
    }

    /** A whole body says how many bytes it has in its value. */
    static void takeText(juce::String& said, const Bundle& body, int size)
    {
        const auto bytes = body.getByteArray("bytes");
        if (static_cast<int>(bytes.getSize()) == size)
            said = textOfUtf8({ static_cast<const char*>(bytes.getData()), bytes.getSize() }).trim();
    }

    void takeBody(const Bundle& body)
    {
        const auto& values = body.getValues();
        const auto found = values.find("value");
        if (found == values.end() || !std::holds_alternative<juce::int32>(found->second))
            return;
        const auto value = std::get<juce::int32>(found->second);
        switch (body.getInt("key", -1))
        {
        case bodyBand:
            reported = value;
            break;
        case bodyFrequency:
            if (reported >= 0 && reported < bandCount)
                arrive(reported, value);
            break;
        case bodyName:
            takeText(name, body, value);
            break;
        case bodyText:
            takeText(text, body, value);
            break;
        case bodyStereo:
            stereo = value != 0;
            break;
        case bodySensitivity:
            sensitivity = value;
            break;
        default: // the region has no place on the page
            break;
        }
    }

    /** Another frequency is another station, which has not said its name yet. */
    void arrive(int where, int frequency)
    {
        if (std::exchange(frequencies[static_cast<std::size_t>(where)], frequency) == frequency)
            return;
        forgetStation();
    }

    void forgetStation()
    {
        name.clear();
        text.clear();
    }

    void test(bool on)
    {
        testing = on;
        host.send(RMSG_RADIO_EVENT, receptionTest, on ? 1 : 0);
        host.changed();
    }

    juce::String frequencyText(int where) const
    {
        const auto frequency = frequencies[static_cast<std::size_t>(where)];
        if (where != fm)
            return juce::String(frequency);
        const auto exact = juce::String(frequency / static_cast<double>(unitsPerMHz), 2);
        return exact.endsWithChar('0') ? exact.dropLastCharacters(1) : exact;
    }

    /** In the units of the band. */
    static std::optional<int> frequencyOf(const juce::String& label)
    {
        const auto value = label.getDoubleValue();
        if (value <= 0)
            return {};
        return label.containsChar('.') ? juce::roundToInt(value * unitsPerMHz) : juce::roundToInt(value);
    }

    int reported = fm; ///< band of the body that comes next
};

} // namespace

std::unique_ptr<Profile> makeRadioProfile(Host& host)
{
    return std::make_unique<RadioProfile>(host);
}

} // namespace BenchProgram
