#include "ApplicationLayer/radio/RadioApplication.h"

#include "ApplicationLayer/radio/RadioAutoTest.h"
#include "ApplicationLayer/radio/RadioHandlers.h"
#include "EngineApi/AutoTestSession.h"
#include "EngineApi/Bars.h"
#include "EngineApi/Favourites.h"
#include "EngineApi/HostLink.h"
#include "EngineApi/KeyCodes.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineApi/Settings.h"
#include "kernel/ComponentRegistration.h"
#include "kernel/MessageIds.h"
#include "lowlayer/BytePool.h"
#include "platform/base/Logger.h"
#include "platform/settings/SetupIndex.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace Pubhead;

namespace
{

const Kernel::ComponentRegistration registration { Kernel::radioApplicationId,
                                                   []() -> Kernel::SystemTask* { return new RadioApplication; } };

constexpr Platform::Log logger { "ApplicationLayer/RadioApplication", "RadioApplication" };

/** arg1 of RMSG_RADIO_CONTROL. */
enum Control : juce::int32 {
    controlTuner = Platform::radioToTuner, ///< the value is between the program and the microcontroller
    controlSeekUp = Platform::radioSeekUp,
    controlSeekDown = Platform::radioSeekDown,
    controlStepUp = Platform::radioStepUp,
    controlStepDown = Platform::radioStepDown,
    controlTune = Platform::radioTune,
    controlSensitivity2 = Platform::radioTestStep2, ///< steps of the sensitivity test, passed on
    controlSensitivity = Platform::radioTestValue,
    controlSensitivity3 = Platform::radioTestStep3,
    controlRefresh = Platform::radioRefresh
};

/** arg1 of RMSG_RADIO_EVENT. */
enum ProgramEvent : juce::int32 {
    offersFavourites = Platform::radioOffersFavourites,
    playsFavourite = Platform::radioPlaysFavourite,
    sensitivityTest = Platform::radioTest
};

/** First byte of EVENT_RADIO_INFO to the microcontroller. */
enum TunerOrder : int { seekDown = 1, stepDown = 2, seekUp = 3, stepUp = 4, tune = 5, setRegion = 7, passOn = 8 };

/** First byte of EVENT_RADIO_TESTMODE to the microcontroller. */
enum TestOrder : int { testOpen = 0, testSensitivity = 1, testStep2 = 2, testStep3 = 3 };

/** arg1 of a favourite's message. */
constexpr juce::int32 playFavourite = 1;

/** A frequency has two bytes on its way to the tuner. */
constexpr int highestFrequency = 0xffff;

void order(const Platform::Log::Line& line, const char* name, TunerOrder tunerOrder)
{
    line.debug("%s", name);
    sendCommand(EVENT_RADIO_INFO, { tunerOrder });
}

void tuneTo(int band, int frequency)
{
    const std::uint8_t block[] = { tune, static_cast<std::uint8_t>(band), static_cast<std::uint8_t>(frequency >> 8),
                                   static_cast<std::uint8_t>(frequency) };
    sendData(EVENT_RADIO_INFO, block, sizeof block);
}

void play(juce::int32 favourite)
{
    Platform::debugPrint("Radio:: Navico play favorite index = %d \n", favourite);
    auto* bar = Provided<FavoriteBar>::get();
    if (bar == nullptr || !bar->isStored(favourite))
        return;
    bar->postMessage(Kernel::MSG_FAVOURITES_HIDE, 0, 0, nullptr);
    const int page = getFavouritePage(favourite);
    // A page that is not current yet asks for itself and takes the favourite along.
    if (page != getLastSourcePage())
        return postToPage(page, Kernel::MSG_APP_KEY, KEY_ROTARY_ENTER, favourite);
    const int program = appTypeOfPage(getNormalSource());
    sendRemoteMessage(program, favouriteMessageOf(program), playFavourite, favourite);
}

void showForTest(int page)
{
    if (getNormalSource() != page)
        requestShowPage(page, true);
}

} // namespace

RadioApplication::RadioApplication()
    : ApplicationTask({ new AMHandler(tuner), new FMHandler(tuner), new WBHandler(tuner) })
    , SystemTimer(Kernel::radioApplicationId)
{
}

void RadioApplication::handleOwnMessage(const Kernel::SystemMessage& message)
{
    switch (message.id)
    {
    case Kernel::MSG_APP_REMOTE:
        if (const auto* remote = Kernel::payloadAs<Platform::RemoteMessage>(message.payload))
            fromProgram(*remote);
        return;
    case Kernel::MSG_SYS_READY:
        return unitReady();
    case Kernel::MSG_HOST_EVENT:
        return fromTuner(message.arg1, message.payload);
    case Kernel::MSG_SYS_TIMER:
        return weatherAlertLasts();
    case Kernel::MSG_RADIO_REGION:
        return changeRegion(message.arg1);
    case Kernel::MSG_AUTOTEST_COMMAND:
        return autoTest(LowLayer::bytesOf(message.payload));
    default:
        return;
    }
}

void RadioApplication::unitReady()
{
    started = true;
    storeArea();
}

void RadioApplication::storeArea() const
{
    if (started && tuner.areaCode != TunerState::unknownArea)
        setSettingInt(Platform::tunerRegionSetting, tuner.areaCode, false, AppUnknown);
}

void RadioApplication::changeRegion(int areaCode)
{
    // The old frequencies may not be in the new region's bands.
    tuner.frequencies[bandFM] = tuner.frequencies[bandAM] = 0;
    sendCommand(EVENT_RADIO_INFO, { setRegion, areaCode });
}

void RadioApplication::weatherAlertLasts()
{
    stopTimer(weatherAlertTimer);
    if (weatherAlert && getSettingInt(Platform::weatherAlertSetting) != 0)
        requestPageState(mbWB, AppAction::ToRun, true);
}

void RadioApplication::fromProgram(const Platform::RemoteMessage& remote)
{
    if (remote.what == RMSG_RADIO_CONTROL)
        control(remote.arg1, remote.arg2);
    else if (remote.what == RMSG_RADIO_EVENT)
        programEvent(remote.arg1, remote.arg2);
}

void RadioApplication::control(juce::int32 which, juce::int32 value)
{
    switch (which)
    {
    case controlTuner:
        return sendCommand(EVENT_RADIO_INFO, { passOn, value });
    case controlSeekUp:
        return order(logger(), "seek up", seekUp);
    case controlSeekDown:
        return order(logger(), "seek down", seekDown);
    case controlStepUp:
        return order(logger(), "step up", stepUp);
    case controlStepDown:
        return order(logger(), "step down", stepDown);
    case controlTune:
        return changeFrequency(value);
    case controlSensitivity2:
        return sendCommand(EVENT_RADIO_TESTMODE, { testStep2 });
    case controlSensitivity:
        return changeSensitivity(value);
    case controlSensitivity3:
        return sendCommand(EVENT_RADIO_TESTMODE, { testStep3 });
    case controlRefresh:
        notifyTuner();
        return bodies.flush();
    default:
        return;
    }
}

void RadioApplication::programEvent(juce::int32 which, juce::int32 value)
{
    switch (which)
    {
    case offersFavourites:
        return offerFavourites(value);
    case playsFavourite:
        return play(value);
    case sensitivityTest:
        return setTestMode(value != 0);
    default:
        return;
    }
}

void RadioApplication::notifyTuner() const
{
    const int frequency = tuner.currentFrequency();
    if (frequency == 0 && tuner.band != bandWB)
        return;
    Platform::debugPrint("Radio:: notify mcu change frequce band = %d ,fre = %d \r\n", static_cast<int>(tuner.band),
                         frequency);
    tuneTo(tuner.band, frequency);
}

void RadioApplication::changeFrequency(juce::int32 value) const
{
    if (value < 0 || value > highestFrequency)
    {
        logger().error("the radio program asks for frequency %d, 0 to %d are sent", value, highestFrequency);
        return;
    }
    tuneTo(tuner.band, value);
    logger().debug("change Fre : " + juce::String(value));
}

void RadioApplication::changeSensitivity(juce::int32 value) const
{
    logger().debug("change  radio sensitivity value = " + juce::String(value));
    sendCommand(EVENT_RADIO_TESTMODE, { testSensitivity, tuner.band, value });
}

void RadioApplication::setTestMode(bool on)
{
    if (!std::exchange(testMode, on) && on)
        sendCommand(EVENT_RADIO_TESTMODE, { testOpen });
}

void RadioApplication::autoTest(std::span<const std::uint8_t> request) const
{
    Platform::debugPrint("Radio AutoTestHandle:%s\r\n",
                         Platform::hexPairs(request.data(), static_cast<int>(request.size())).toRawUTF8());
    const auto reply = replyToRadioTest(request, tuner);
    if (reply.empty())
        return;
    const bool am = request.size() > 2 && request[2] == testBandAM;
    switch (request[1])
    {
    case testShowBand:
        showForTest(am ? mbAM : mbFM);
        break;
    case testSeekUp:
        sendCommand(EVENT_RADIO_INFO, { seekUp });
        break;
    case testSeekDown:
        sendCommand(EVENT_RADIO_INFO, { seekDown });
        break;
    case testNotifyTuner:
        notifyTuner();
        break;
    case testTune:
        tuneTo(am ? bandAM : bandFM, request[3] << 8 | request[4]);
        break;
    default:
        break;
    }
    if (auto* session = Provided<AutoTestSession>::get())
        session->addMsgToBuffer({ reply.data(), reply.size() });
}

} // namespace ApplicationLayer
