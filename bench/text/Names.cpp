#include "bench/text/Names.h"

#include "EngineApi/KeyCodes.h"
#include "platform/devices/UnitLines.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <iomanip>
#include <limits>
#include <set>
#include <sstream>

namespace Bench
{

using namespace EngineApi;
using namespace Pubhead;

namespace
{

constexpr std::array pageTable { PageInfo { mbMainMenu, AppMainMenu, "Main menu", "menu mainmenu", true },
                                 PageInfo { mbSetup, AppSetup, "Setup", "setup", false },
                                 PageInfo { mbBTPhone, AppBluetooth, "Phone", "phone btphone", false },
                                 PageInfo { mbBTAudio, AppBluetooth, "Bluetooth audio", "btaudio bt bluetooth", true },
                                 PageInfo { mbFM, AppRadio, "FM radio", "fm", false },
                                 PageInfo { mbAM, AppRadio, "AM radio", "am", false },
                                 PageInfo { mbWB, AppRadio, "Weather radio", "wb weather", false },
                                 PageInfo { mbUSBAudio, AppUSB, "USB music", "usb usbaudio", false },
                                 PageInfo { mbUSBVideo, AppUSB, "USB video", "usbvideo", false },
                                 PageInfo { mbiPodAudio, AppiPod, "iPod music", "ipod ipodaudio", true },
                                 PageInfo { mbiPodVideo, AppiPod, "iPod video", "ipodvideo", false },
                                 PageInfo { mbReariPod, AppiPod, "iPod, rear zone", "rearipod", false },
                                 PageInfo { mbiPodPandora, AppPandora, "Pandora", "pandora", false },
                                 PageInfo { mbSirius, AppSirius, "Satellite radio", "sirius sxm satellite", true },
                                 PageInfo { mbAuxin1, AppAuxIn, "AUX 1", "aux1 auxin1", false },
                                 PageInfo { mbAuxin2, AppAuxIn, "AUX 2", "aux aux2 auxin auxin2", false },
                                 PageInfo { mbRearAV1, AppAuxIn, "AUX 1, rear zone", "rear1 rearav1", false },
                                 PageInfo { mbRearAV2, AppAuxIn, "AUX 2, rear zone", "rear2 rearav2", false },
                                 PageInfo { mbStandby, AppStandby, "Standby", "standby", false },
                                 PageInfo { mbAVOff, AppStandby, "Audio off", "off avoff", false },
                                 PageInfo { mbEQ, AppEQ, "Equaliser", "eq equaliser", false },
                                 PageInfo { mbAntitheft, AppAntitheft, "Unit locked", "antitheft lock", false },
                                 PageInfo { mbCamera, AppCamera, "Camera", "camera", false } };

struct SourceEntry
{
    const char* name;
    int type;
    const char* otherNames;
};

constexpr int usbType = 10;

constexpr std::array sourceTable { SourceEntry { "am", 0, "" },
                                   SourceEntry { "fm", 1, "" },
                                   SourceEntry { "disc", 2, "" },
                                   SourceEntry { "aux", 5, "aux2" },
                                   SourceEntry { "sirius", 8, "sxm satellite" },
                                   SourceEntry { "ipod", 9, "" },
                                   SourceEntry { "usb", usbType, "" },
                                   SourceEntry { "bt", 13, "bluetooth btaudio" },
                                   SourceEntry { "off", 17, "avoff" },
                                   SourceEntry { "pandora", 21, "" },
                                   SourceEntry { "wb", 22, "weather" } };

struct NamedValue
{
    const char* name;
    int value;
};

constexpr std::array keyTable { NamedValue { "playpause", KEY_PLAYPAUSE },
                                NamedValue { "next", KEY_NEXT },
                                NamedValue { "pre", KEY_PRE },
                                NamedValue { "source", KEY_SOURCE },
                                NamedValue { "power-on", KEY_POWER_ON },
                                NamedValue { "power-off", KEY_POWER_OFF },
                                NamedValue { "amfm", KEY_AMFM },
                                NamedValue { "volume-down", KEY_VOLUME_DOWN },
                                NamedValue { "volume-up", KEY_VOLUME_UP },
                                NamedValue { "power", KEY_POWER },
                                NamedValue { "mms1", KEY_MMS1 },
                                NamedValue { "menu", KEY_MENU },
                                NamedValue { "enter", KEY_ROTARY_ENTER },
                                NamedValue { "ams1", KEY_AMS1 },
                                NamedValue { "camera", KEY_SHOWCAMERA },
                                NamedValue { "return", KEY_RETURN },
                                NamedValue { "version", KEY_SHOWVERSION },
                                NamedValue { "rotary-next", KEY_ROTARY_NEXT },
                                NamedValue { "rotary-pre", KEY_ROTARY_PRE },
                                NamedValue { "favorites", KEY_FAVORITIES },
                                NamedValue { "playpause-long", KEY_PLAYPAUSE_LONGPRESS },
                                NamedValue { "pre-long", KEY_PRE_LONGPRESS },
                                NamedValue { "next-long", KEY_NEXT_LONGPRESS },
                                NamedValue { "show-menu", KEY_REQUESTSHOWMENU } };

constexpr std::array messageTable {
#define REMOTE_MESSAGE(name, number, direction, arg1, arg2, bundle, meaning, expected) NamedValue { #name, number },
#define REMOTE_CODE(message, argument, name, number, meaning)
#include "platform/channel/RemoteMessages.def"
#undef REMOTE_MESSAGE
#undef REMOTE_CODE
};

bool holdsWord(const char* words, const std::string& word)
{
    std::istringstream stream(words);
    for (std::string one; stream >> one;)
        if (one == word)
            return true;
    return false;
}

std::optional<int> numberIn(const std::string& text, int highest)
{
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    const auto* first = text.data() + (isHex ? 2 : 0);
    const auto* last = text.data() + text.size();
    int value = -1;
    const auto [end, error] = std::from_chars(first, last, value, isHex ? 16 : 10);
    if (error != std::errc() || end != last || value < 0 || value > highest)
        return {};
    return value;
}

} // namespace

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::span<const PageInfo> allPages()
{
    return pageTable;
}

const PageInfo* pageInfo(int page)
{
    const auto found = std::find_if(pageTable.begin(), pageTable.end(), [&](auto& info) { return info.page == page; });
    return found != pageTable.end() ? &*found : nullptr;
}

bool isRearZone(int page)
{
    return page == mbReariPod || page == mbRearAV1 || page == mbRearAV2;
}

bool isOnlyPage(int page)
{
    const auto* info = pageInfo(page);
    return info != nullptr && std::count_if(pageTable.begin(), pageTable.end(),
                                            [&](auto& other) { return other.appType == info->appType; }) == 1;
}

const PageInfo* pageOfApp(int appType)
{
    const auto found =
        std::find_if(pageTable.begin(), pageTable.end(), [&](auto& info) { return info.appType == appType; });
    return found != pageTable.end() ? &*found : nullptr;
}

int findPage(const std::string& name)
{
    const auto wanted = lowerCase(name);
    for (const auto& info : pageTable)
        if (wanted == lowerCase(pageName(info.page)) || holdsWord(info.shortNames, wanted))
            return info.page;
    return NUM_OF_PAGES;
}

std::vector<std::string> pageNames()
{
    std::vector<std::string> names;
    for (const auto& info : pageTable)
    {
        names.emplace_back(pageName(info.page));
        std::istringstream stream(info.shortNames);
        for (std::string one; stream >> one;)
            names.push_back(one);
    }
    return names;
}

int findApp(const std::string& name)
{
    const auto wanted = lowerCase(name);
    for (const auto appType : allApps())
    {
        const auto full = lowerCase(appTypeName(appType));
        if (wanted == full || wanted == full.substr(3))
            return appType;
    }
    const auto* info = pageInfo(findPage(name));
    return info != nullptr ? info->appType : static_cast<int>(AppUnknown);
}

const std::set<int>& allApps()
{
    static const auto types = []
    {
        std::set<int> found;
        for (const auto& info : pageTable)
            found.insert(info.appType);
        return found;
    }();
    return types;
}

std::vector<std::string> appNames()
{
    std::vector<std::string> names;
    for (const auto appType : allApps())
    {
        names.emplace_back(appTypeName(appType));
        names.push_back(lowerCase(names.back().substr(3)));
    }
    return names;
}

std::string sourceName(Source source)
{
    for (const auto& entry : sourceTable)
        if (entry.type == source.type)
            return entry.name + (source.number != 0 ? " " + std::to_string(source.number) : std::string());
    return "type " + std::to_string(source.type) + " " + std::to_string(source.number);
}

std::optional<Source> findSource(std::span<const std::string> words)
{
    constexpr int highestByte = 255;
    if (words.empty() || words.size() > 2)
        return {};
    const auto number = words.size() == 2 ? numberIn(words[1], highestByte) : std::optional(0);
    if (!number)
        return {};
    const auto wanted = lowerCase(words[0]);
    for (const auto& entry : sourceTable)
        if (wanted == entry.name || holdsWord(entry.otherNames, wanted))
            return Source { entry.type, *number };
    if (const auto type = numberIn(wanted, highestByte))
        return Source { *type, *number };
    return {};
}

std::vector<std::string> sourceNames()
{
    return namesIn(sourceTable);
}

std::optional<int> findKey(const std::string& name)
{
    constexpr int highestKey = 255;
    const auto wanted = lowerCase(name);
    for (const auto& entry : keyTable)
        if (wanted == entry.name)
            return entry.value;
    return numberIn(wanted, highestKey);
}

std::vector<std::uint8_t> findKeys(const std::string& names)
{
    std::vector<std::uint8_t> keys;
    std::istringstream stream(names);
    for (std::string name; std::getline(stream, name, ',');)
    {
        const auto key = findKey(name);
        if (!key)
            return {};
        keys.push_back(static_cast<std::uint8_t>(*key));
    }
    return keys;
}

std::string keyName(int value)
{
    if (value == KEY_RELEASE)
        return "release";
    const auto found = std::find_if(keyTable.begin(), keyTable.end(), [&](auto& key) { return key.value == value; });
    return found != keyTable.end() ? found->name : std::to_string(value);
}

std::string keyText(int key, int argument)
{
    return keyName(key) + (argument != 0 ? " " + std::to_string(argument) : "");
}

std::vector<std::string> keyNames()
{
    return namesIn(keyTable);
}

std::optional<int> findMessage(const std::string& name)
{
    const auto found =
        std::find_if(messageTable.begin(), messageTable.end(), [&](auto& each) { return name == each.name; });
    return found != messageTable.end() ? std::optional(found->value) : numberIn(name, std::numeric_limits<int>::max());
}

std::vector<std::string> messageNames()
{
    return namesIn(messageTable);
}

std::span<const char* const> groupNames()
{
    static constexpr std::array names { "GeneralHighGroup", "SystemGroup", "GeneralNormalGroup", "GeneralLowGroup",
                                        "MonitorSendThread" };
    return names;
}

std::string lineName(std::uint32_t line)
{
    struct LineEntry
    {
        std::uint32_t number;
        const char* name;
    };
    constexpr std::array lineTable {
        LineEntry { Platform::remoteTransmitLine, "remote transmit" },
        LineEntry { Platform::output2Line, "unit on, output 2" },
        LineEntry { Platform::videoDecoderLine, "video decoder" },
        LineEntry { Platform::dspStartLine, "audio DSP start" },
        LineEntry { Platform::output1Line, "unit on, output 1" },
    };
    const auto* found =
        std::find_if(lineTable.begin(), lineTable.end(), [&](auto& each) { return each.number == line; });
    return found != lineTable.end() ? found->name : "";
}

std::string voltsText(double volts)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << volts << " V";
    return text.str();
}

} // namespace Bench
