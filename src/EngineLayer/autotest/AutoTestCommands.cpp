#include "EngineLayer/autotest/AutoTestCommands.h"

#include "EngineApi/AutoTestSession.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/HostLink.h"
#include "EngineApi/KeyCodes.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Settings.h"
#include "EngineLayer/autotest/AutoTestFrame.h"
#include "dsp/AudioServices.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "lowlayer/BytePool.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/base/Utf8.h"
#include "platform/settings/SetupIndex.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <vector>

namespace EngineLayer
{

using namespace EngineApi;

namespace
{

constexpr Platform::Log logger { "EngineLayer/AutoTestCommands", "ATestSession" };

Platform::Counter commandsRefused { "autotest.commands-refused",
                                    "commands of the test equipment that cannot be carried out" };

/** Byte 4 of a frame. */
enum Command : int {
    controlUnit = 0x00,
    radioCommand = 0x01,
    usbCommand = 0x04,
    bluetoothCommand = 0x05,
    openSetupMenu = 0x06,
    readText = 0x07,
    testModeSwitch = 0x82,
    acknowledgement = 0x83
};

/** Byte 5 of `controlUnit`. */
enum Control : int { controlKey = 0, controlSource = 1, controlDevices = 2, controlVolume = 3, controlDeviceId = 4 };

/** Byte 5 of `acknowledgement`. */
constexpr int acknowledged = 0xff;
constexpr int sendAgain = 0xfc;

constexpr int mainZone = 1;
constexpr int volumeAfterEntry = 30;

/** Key items of the equipment that stand for a key of the unit. */
struct KeyItem
{
    int item;
    KeyCode key;
};
constexpr KeyItem keyItems[] = {
    { 2, KEY_PLAYPAUSE }, { 3, KEY_PRE },   { 4, KEY_NEXT },    { 6, KEY_SOURCE },
    { 10, KEY_AMFM },     { 17, KEY_MENU }, { 20, KEY_SOURCE }, { 23, KEY_MENU },
};
/** The others. */
enum OtherItem : int { itemMute = 1, itemVolumeDown = 12, itemVolumeUp = 13, itemPower = 14 };

struct SourceRow
{
    int type;
    int number;
    int page;
};
constexpr SourceRow sourceRows[] = {
    { 0, 0, Pubhead::mbFM },           { 5, 0, Pubhead::mbAuxin2 },  { 8, 0, Pubhead::mbSirius },
    { 10, 1, Pubhead::mbUSBAudio },    { 11, 0, Pubhead::mbCamera }, { 13, 2, Pubhead::mbBTAudio },
    { 21, 0, Pubhead::mbiPodPandora },
};

/** The setting behind each text item; 0 for one without a text. */
constexpr int textSettings[] = {
    1031, 1032, 1033, 1028, 1029, 0, 0, 1034, 1035, 1041, 0, 0, Platform::deviceIdSetting
};

void answer(std::initializer_list<int> values)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(values.size());
    for (const int value : values)
        bytes.push_back(static_cast<std::uint8_t>(value));
    answerAutoTest(bytes);
}

void reportHandedOver()
{
    answer({ testModeSwitch, 0x02 });
}

/** The last six characters as packed BCD; none when they are not six digits. */
std::optional<DeviceId> deviceIdOf(const juce::String& text)
{
    constexpr int digits = 6;
    const auto tail = text.getLastCharacters(digits);
    if (tail.length() != digits || !tail.containsOnly("0123456789"))
        return {};
    DeviceId id {};
    for (std::size_t i = 0; i < id.size(); ++i)
        id[i] = static_cast<std::uint8_t>(
            tail.substring(static_cast<int>(2 * i), static_cast<int>(2 * i + 2)).getHexValue32());
    return id;
}

void logRefused(const char* what)
{
    ++commandsRefused;
    logger().error("command of the test equipment refused: %s", what);
}

} // namespace

void AutoTestCommands::handle(const Request& p)
{
    switch (p.command())
    {
    case testModeSwitch:
        return switchTestMode(p);
    case acknowledgement:
        if (auto* session = Provided<AutoTestSession>::get())
            if (const int state = p.at(5); state == acknowledged || state == sendAgain)
                session->setPeerState(true, state);
        return;
    case controlUnit:
        return control(p);
    case radioCommand:
        return passToApplication(Kernel::radioApplicationId, p);
    case usbCommand:
        return passToApplication(Kernel::usbApplicationId, p);
    case bluetoothCommand:
        return passToApplication(Kernel::bluetoothApplicationId, p);
    case openSetupMenu:
        return openSetup(p);
    case readText:
        return answerText(p.at(5));
    default:
        return;
    }
}

void AutoTestCommands::switchTestMode(const Request& p)
{
    if (p.at(5) == 0)
    {
        setEnterTestMode(false);
        return answer({ testModeSwitch, 0x00 });
    }
    if (p.at(5) != 1 || getEnterTestMode())
        return;
    setEnterTestMode(true);
    requestShowPage(Pubhead::mbFM, true);
    auto* session = Provided<AutoTestSession>::get();
    if (session == nullptr)
        return;
    session->clearBuffer();
    answer({ controlUnit, controlVolume, 0x00, volumeAfterEntry });
    session->start();
    answer({ testModeSwitch, 0x01 });
}

void AutoTestCommands::control(const Request& p)
{
    switch (p.at(5))
    {
    case controlKey:
        return pressKey(p);
    case controlSource:
        return selectSource(p.at(6), p.at(7));
    case controlDevices:
        return answer({ p.command(), p.at(5),
                        (getDeviceState(triggerInput) ? 0x01 : 0) | (getDeviceState(spareDevice) ? 0x02 : 0) });
    case controlVolume:
        return setVolume(p);
    case controlDeviceId:
        return storeDeviceId(p);
    default:
        return;
    }
}

void AutoTestCommands::pressKey(const Request& p)
{
    const int item = p.at(6);
    const int detail = p.at(7);
    const bool handled = injectKey(item, detail);
    answer({ p.command(), p.at(5), item, detail, handled ? 1 : 0 });
    if (item == itemPower && detail == 0)
        reportHandedOver();
}

bool AutoTestCommands::injectKey(int item, int detail)
{
    auto* chips = Provided<Dsp::ChipManager>::get();
    switch (item)
    {
    case itemMute:
        if (chips != nullptr)
            chips->getACService().toggleMute(true);
        return true;
    case itemVolumeDown:
        if (chips != nullptr)
            chips->getACService().volumeDown(1);
        return true;
    case itemVolumeUp:
        if (chips != nullptr)
            chips->getACService().volumeUp(1);
        return true;
    case itemPower:
        sendCommand(EVENT_KEY, { 0, detail == 1 ? KEY_POWER_OFF : KEY_POWER_ON, 0 });
        return true;
    default:
        break;
    }
    const auto* found =
        std::find_if(std::begin(keyItems), std::end(keyItems), [item](const auto& each) { return each.item == item; });
    if (found == std::end(keyItems))
        return false;
    keys.handleKey(originWiredRemote, found->key);
    return true;
}

void AutoTestCommands::selectSource(int type, int number)
{
    const auto* row = std::find_if(std::begin(sourceRows), std::end(sourceRows),
                                   [&](const auto& each) { return each.type == type && each.number == number; });
    if (row == std::end(sourceRows))
        return logRefused("there is no such source");
    if (row->page == getNormalSource())
        reportSourceToAutoTest();
    else
        requestShowPage(row->page, true);
}

void AutoTestCommands::setVolume(const Request& p)
{
    if (p.at(6) != 0)
        return;
    if (auto* chips = Provided<Dsp::ChipManager>::get())
        chips->getACService().setVolume(p.at(7), mainZone);
    answer({ p.command(), p.at(5), p.at(6), p.at(7) });
}

void AutoTestCommands::storeDeviceId(const Request& p)
{
    constexpr std::size_t textBegin = 3; // behind command, control and length
    const auto length = static_cast<std::size_t>(p.at(6));
    const auto parameters = p.parameters();
    if (parameters.size() < textBegin + length)
        return logRefused("the device id is longer than its frame");
    const auto bytes = parameters.subspan(textBegin, length);
    const auto text = Platform::textOfUtf8({ reinterpret_cast<const char*>(bytes.data()), bytes.size() });
    setSettingString(Platform::deviceIdSetting, text, false, Pubhead::AppUnknown);
    if (const auto id = deviceIdOf(text))
        keys.setDeviceId(*id);
    else
        logger().info("the device id does not end with six digits: stored, and not sent to the MCU");
    answerAutoTest(parameters);
}

void AutoTestCommands::passToApplication(Kernel::ComponentId application, const Request& p)
{
    const auto parameters = p.parameters();
    const auto length = static_cast<int>(parameters.size());
    LowLayer::BytePool::Ptr bytes = new LowLayer::BytePool(length, nullptr);
    bytes->assign(parameters.data(), length);
    Kernel::postSystemMessage(application, Kernel::MSG_AUTOTEST_COMMAND, length, 0, std::move(bytes));
}

void AutoTestCommands::openSetup(const Request& p)
{
    if (p.at(5) == 4 && p.at(6) == 8 && p.at(7) == 1)
        postToPage(Pubhead::mbSetup, Kernel::MSG_APP_KEY, KEY_PLAYPAUSE_LONGPRESS, 0);
    answer({ p.command(), p.at(5), p.at(6), p.at(7) });
}

void AutoTestCommands::answerText(int item)
{
    if (item >= static_cast<int>(std::size(textSettings)))
        return;
    const int setting = textSettings[item];
    const auto text = setting != 0 ? getSettingString(setting) : juce::String();
    std::vector<std::uint8_t> message { readText, static_cast<std::uint8_t>(item) };
    const auto shown = Platform::utf8Prefix(text, AutoTestFrame::longestMessage - message.size());
    message.insert(message.end(), shown.begin(), shown.end());
    answerAutoTest(message);
}

} // namespace EngineLayer
