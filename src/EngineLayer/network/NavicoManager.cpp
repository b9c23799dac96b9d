#include "EngineLayer/network/NavicoManager.h"

#include "EngineApi/HostLink.h"
#include "EngineApi/NavicoCanApi.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineApi/Settings.h"
#include "EngineLayer/network/SoftwareUpdate.h"
#include "dsp/AudioServices.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "kernel/MessageIds.h"
#include "lowlayer/BytePool.h"
#include "platform/base/CommandLine.h"
#include "platform/base/Logger.h"
#include "platform/base/Threads.h"
#include "platform/base/Utf8.h"
#include "platform/config/Configuration.h"
#include "platform/marine/PGNPacket.h"
#include "platform/settings/SetupIndex.h"

#include <juce_events/juce_events.h>

namespace EngineLayer
{

using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;

namespace
{

constexpr Platform::Log logger { "EngineLayer/NavicoManager", "NavicoManager" };

constexpr int bothZones = 0;
constexpr int zoneCount = 2;
constexpr int centre = 6;

/** arg1 of MSG_NAVICO_DEVICE_STATE in place of a zone. */
constexpr juce::int32 muteNotice = 3;

/** What the microcontroller asks for with EVENT_REQUEST_VERSION. */
enum VersionSelector : int { osVersion = 0, applicationVersion = 3, mcuVersion = 4 };

/** Types of data blocks from the network. */
constexpr int updateBlock = 30;
constexpr int iPodBlocks[] = { 13, 16 };
constexpr int playerBlocks[] = { 17, 19 };
constexpr int usbBlocks[] = { 32, 35 };

bool isIn(const int (&range)[2], int value)
{
    return value >= range[0] && value <= range[1];
}

juce::String hexadecimal(std::span<const std::uint8_t> bytes)
{
    return hexPairs(bytes.data(), static_cast<int>(bytes.size()));
}

void relay(int appType, juce::int32 what, std::span<const std::uint8_t> bytes)
{
    if (appType != AppUnknown)
        sendRemoteMessage(appType, what, 0, 0,
                          RemoteObjFormat::formatByteArray(bytes.data(), static_cast<int>(bytes.size())));
}

int programOfSource()
{
    return appTypeOfPage(getNormalSource());
}

ZoneSettings zoneSettings()
{
    return { getSettingInt(Platform::faderSetting),          getSettingInt(Platform::balanceSetting),
             getSettingInt(Platform::subwooferLevelSetting), getSettingInt(Platform::trebleSetting),
             getSettingInt(Platform::middleSetting),         getSettingInt(Platform::bassSetting),
             getSettingInt(Platform::presetSetting),         getSettingInt(Platform::highPassSetting) };
}

/** In steps. Whatever is not zone 1 is as loud as zone 2. */
int volumeOf(int zone)
{
    return Dsp::DSPSettingHelperImpl::getInstance()->getVolume(zone != 1);
}

juce::String textOf(std::span<const std::uint8_t> bytes)
{
    return textOfUtf8({ reinterpret_cast<const char*>(bytes.data()), bytes.size() });
}

void sendVersion(int selector, const juce::String& text)
{
    Parcel parcel;
    parcel.writeByte(selector);
    parcel.writeString(text.toStdString());
    sendData(EVENT_SEND_VERSION, parcel.data(), parcel.dataSize());
}

/** The zone itself, and what the unit has no setting for, have none. */
void applyZoneParameters(const std::map<int, FieldValue>& fields)
{
    struct Target
    {
        int field, setting, centre;
    };
    constexpr Target targets[] = {
        { faderField, Platform::faderSetting, centre },         { balanceField, Platform::balanceSetting, centre },
        { subwooferField, Platform::subwooferLevelSetting, 0 }, { trebleField, Platform::trebleSetting, centre },
        { middleField, Platform::middleSetting, centre },       { bassField, Platform::bassSetting, centre }
    };
    for (const auto& target : targets)
        if (const auto found = fields.find(target.field); found != fields.end())
            setSettingInt(target.setting, zoneFieldValue(found->second) + target.centre, true, AppUnknown);
}

void stepVolume(Dsp::ACService& audio, int zone, bool up)
{
    const auto step = [&](int which) { up ? audio.volumeUp(1, which) : audio.volumeDown(1, which); };
    step(zone == bothZones ? 1 : zone);
    if (zone == bothZones && getSettingInt(Platform::zone2OnSetting) == 1 &&
        getSettingInt(Platform::zone2VolumeSetting) == 1)
        step(zoneCount);
}

void applyZoneVolume(const PGNPacket& packet)
{
    auto* chips = Provided<Dsp::ChipManager>::get();
    if (chips == nullptr)
        return;
    auto& audio = chips->getACService();
    const auto* zoneNamed = packet.getFiledsValue(volumeZoneField);
    const auto zone = zoneNamed != nullptr ? static_cast<int>(zoneNamed->value) : bothZones;
    if (const auto* volume = packet.getFiledsValue(volumeValueField))
        audio.setVolume(static_cast<int>(volume->value) / 2, zone);
    if (const auto* direction = packet.getFiledsValue(volumeStepField); direction != nullptr && direction->value < 2)
        stepVolume(audio, zone, direction->value == 0);
    if (const auto* mute = packet.getFiledsValue(volumeMuteField); mute != nullptr && mute->value < 2)
        audio.toggleMute(true);
}

void closePrograms()
{
    for (const auto appType : getRegisteredApps())
        closeApp(appType);
}

} // namespace

NavicoManager::NavicoManager()
    : Kernel::SystemTimer(Kernel::navicoManagerId)
{
}

void NavicoManager::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload)
{
    switch (id)
    {
    case Kernel::MSG_NAVICO_REPORT:
        reportZones(pgnZoneConfiguration);
        return reportZones(pgnZoneParameters);
    case Kernel::MSG_NAVICO_SETUP_REPORT:
    {
        Parcel parcel;
        PGNHelper::writePGNHead(parcel, pgnSupportedZones);
        writeSupportedZones(parcel, 0, getSettingString(Platform::zone2NameSetting));
        return sendPgnParcel(parcel);
    }
    case Kernel::MSG_NAVICO_DEVICE_STATE:
        if (arg1 == muteNotice)
            return reportVolumes(arg2 != 0, false);
        if (arg1 == 1 || arg1 == zoneCount)
        {
            Parcel parcel;
            PGNHelper::writePGNHead(parcel, pgnZoneVolume);
            writeZoneVolume(parcel, arg1, arg2, false);
            sendPgnParcel(parcel);
        }
        return;
    case Kernel::MSG_SYS_TIMER:
        stopTimer(arg1);
        if (auto* application = juce::JUCEApplicationBase::getInstance(); application != nullptr && arg1 == quitTimer)
            Platform::callOnMessageThread([application] { application->systemRequestedQuit(); });
        return;
    case Kernel::MSG_HOST_EVENT:
        handleHostEvent(arg1, LowLayer::bytesOf(payload));
        return LowLayer::recycleBytes(payload);
    default:
        return;
    }
}

void NavicoManager::handleHostEvent(int command, Bytes bytes)
{
    switch (command)
    {
    case EVENT_DATA_SEND_CAN:
        return receiveData(bytes);
    case EVENT_SEND_VERSION:
        return reportVersion(bytes);
    case EVENT_PGN_SEND_CAN:
        return receivePgn(bytes);
    case EVENT_SET_DEVICE_ID_FROM_CAN:
        return storeDeviceId(bytes);
    default:
        return;
    }
}

void NavicoManager::receiveData(Bytes bytes)
{
    constexpr int logLine = 268;
    logger(logLine).info(hexadecimal(bytes));
    Parcel parcel;
    parcel.fillData(bytes.data(), static_cast<int>(bytes.size()));
    const auto type = parcel.readShort();
    if (parcel.isCut())
        return;
    const auto source = programOfSource();
    if (isIn(iPodBlocks, type))
        relay(AppiPod, RMSG_N2K_DATA, bytes);
    else if (isIn(playerBlocks, type) && (source == AppiPod || source == AppUSB))
        relay(source, RMSG_N2K_DATA, bytes);
    else if (isIn(usbBlocks, type))
        relay(AppUSB, RMSG_N2K_DATA, bytes);
    else if (type == updateBlock)
    {
        const bool started = update(updateArguments());
        Parcel reply;
        writeUpdateReply(reply, started);
        sendDataUrgent(EVENT_DATA_SEND_CAN, reply.data(), reply.dataSize());
    }
}

void NavicoManager::receivePgn(Bytes bytes)
{
    constexpr int logLine = 390;
    logger(logLine).info("RxPGNParcelFromNavico::" + hexadecimal(bytes) + "\n");
    Parcel parcel;
    parcel.fillData(bytes.data(), static_cast<int>(bytes.size()));
    const auto pgn = PGNHelper::readPGNFromParcel(parcel);
    parcel.readByte();
    switch (pgn)
    {
    case pgnGroupFunction:
        parcel.setReadPosition(0);
        if (auto packet = PGNPacket::parse(parcel))
            groupFunction(*packet, bytes);
        return;
    case pgnIsoRequest:
        return isoRequest(parcel, bytes);
    case pgnProprietarySingleFrame:
    case pgnProprietaryFastPacket:
    {
        const auto address = parcel.readByte();
        const auto transfer = parcel.readByte();
        if (const auto arguments = updateArgumentsOf(pgn, address, transfer, parcel.readData(parcel.bytesLeft())))
            update(*arguments);
        return;
    }
    default:
        return;
    }
}

void NavicoManager::groupFunction(PGNPacket& packet, Bytes whole)
{
    if (!packet.isValid())
    {
        auto ack = packet.getAckPacket();
        return sendPgnParcel(ack);
    }
    switch (packet.getGroupPGN())
    {
    case pgnCurrentFile:
    case pgnLibraryFile:
    case pgnLibraryGroup:
    case pgnLibrarySearch:
        return relay(programOfSource(), RMSG_N2K_PGN, whole);
    case pgnBluetoothDevices:
    case pgnBluetoothSource:
        return relay(AppBluetooth, RMSG_N2K_PGN, whole);
    default:
        break;
    }
    if (packet.getGroupFunction() == PGNPacket::request)
        answerRequest(packet);
    else if (packet.getGroupFunction() == PGNPacket::command)
        obey(packet);
}

void NavicoManager::answerRequest(const PGNPacket& packet) const
{
    const auto pgn = packet.getGroupPGN();
    const auto* first = packet.getFiledsValue(zoneField);
    if (first == nullptr)
        return;
    const auto zone = static_cast<int>(first->value);
    Parcel reply;
    PGNHelper::writePGNHead(reply, packet, pgn);
    switch (pgn)
    {
    case pgnSupportedZones:
        writeSupportedZones(reply, zone != 0 ? zone : 1, getSettingString(Platform::zone2NameSetting));
        return sendPgnParcel(reply);
    case pgnZoneConfiguration:
    case pgnZoneParameters:
        writeZoneConfiguration(reply, zone, zoneSettings());
        return sendPgnParcel(reply);
    case pgnZoneVolume:
        if (zone != bothZones)
        {
            writeRequestedZoneVolume(reply, zone, volumeOf(zone));
            return sendPgnParcel(reply);
        }
        for (int each = 1; each <= zoneCount; ++each)
        {
            PGNHelper::writePGNHead(reply = {}, packet, pgn);
            writeZoneVolume(reply, each, volumeOf(each), volumeOf(each) == 0);
            sendPgnParcel(reply);
        }
        return;
    default:
        return;
    }
}

void NavicoManager::obey(PGNPacket& packet) const
{
    switch (packet.getGroupPGN())
    {
    case pgnZoneConfiguration:
    case pgnZoneParameters:
        if (checkZoneParameters(packet))
            applyZoneParameters(packet.getFiledsValueMap());
        break;
    case pgnZoneVolume:
        if (checkZoneVolume(packet))
            applyZoneVolume(packet);
        break;
    default:
        return;
    }
    auto ack = packet.getAckPacket();
    sendPgnParcel(ack);
}

void NavicoManager::isoRequest(Parcel& parcel, Bytes whole) const
{
    constexpr int replyTransfer = 2;
    const auto address = parcel.readByte();
    parcel.readByte();
    const auto wanted = PGNHelper::readPGNFromParcel(parcel);
    if (parcel.isCut())
        return;
    Parcel reply;
    switch (wanted)
    {
    case pgnCurrentFile:
    case pgnLibrarySearch:
        return relay(programOfSource(), RMSG_N2K_PGN, whole);
    case pgnBluetoothDevices:
    case pgnBluetoothSource:
        return relay(AppBluetooth, RMSG_N2K_PGN, whole);
    case pgnLibraryFile:
        PGNHelper::writePGNHead(reply, wanted);
        writeLibraryFile(reply, getScrFromWinceType(getNormalSource()));
        return sendPgnParcel(reply);
    case pgnLibraryGroup:
        PGNHelper::writePGNHead(reply, wanted);
        writeLibraryGroup(reply, getScrFromWinceType(getNormalSource()));
        return sendPgnParcel(reply);
    case pgnSupportedZones:
        PGNHelper::writePGNHead(reply, wanted, address, replyTransfer);
        writeZoneNames(reply, getSettingString(Platform::zone2NameSetting));
        return sendPgnParcel(reply);
    case pgnZoneConfiguration:
    case pgnZoneParameters:
        return reportZones(wanted);
    case pgnZoneVolume:
        return reportVolumes(false, true);
    default:
        return;
    }
}

void NavicoManager::reportZones(std::int32_t pgn) const
{
    const auto settings = zoneSettings();
    for (int zone = 1; zone <= zoneCount; ++zone)
    {
        Parcel parcel;
        PGNHelper::writePGNHead(parcel, pgn);
        writeZoneConfiguration(parcel, zone, settings);
        sendPgnParcel(parcel);
    }
}

void NavicoManager::reportVolumes(bool mute, bool muteIsSilence) const
{
    for (int zone = 1; zone <= zoneCount; ++zone)
    {
        const auto volume = volumeOf(zone);
        Parcel parcel;
        PGNHelper::writePGNHead(parcel, pgnZoneVolume);
        writeZoneVolume(parcel, zone, volume, muteIsSilence ? volume == 0 : mute);
        sendPgnParcel(parcel);
    }
}

void NavicoManager::reportVersion(Bytes bytes) const
{
    if (bytes.empty())
        return;
    switch (bytes.front())
    {
    case osVersion:
    {
        const auto text = networkVersionOf(BSPInfo::getOSVersion());
        setSettingString(Platform::osVersionSetting, text, false, AppUnknown);
        return sendVersion(osVersion, text);
    }
    case applicationVersion:
    {
        const juce::File file(AppConfig::getApplicationPath() + "Version.txt");
        if (!file.existsAsFile())
            return;
        const auto text = file.loadFileAsString().trimCharactersAtEnd("\r\n");
        setSettingString(Platform::applicationVersionSetting, text, false, AppUnknown);
        return sendVersion(applicationVersion, text);
    }
    case mcuVersion:
        return setSettingString(Platform::mcuVersionSetting, textOf(bytes.subspan(1)), false, AppUnknown);
    default:
        return;
    }
}

void NavicoManager::storeDeviceId(Bytes bytes) const
{
    if (bytes.empty())
        return;
    const auto said = static_cast<std::size_t>(bytes.front());
    const auto text = bytes.subspan(1);
    setSettingString(Platform::deviceIdSetting, textOf(text.first(std::min(said, text.size()))), true, AppUnknown);
}

bool NavicoManager::update(const juce::String& arguments)
{
    if (isTimerRunning(quitTimer))
        return true; // one is enough, however often it is asked for
    if (!startUpdateProgram(arguments))
        return false;
    closePrograms();
    startTimer(quitTimer, quitDelayMs);
    return true;
}

} // namespace EngineLayer

namespace EngineApi
{

namespace
{

constexpr Platform::Log logger { "EngineApi/NavicoCanApi", "NavicoManager" };

juce::MemoryBlock bytesOf(const Platform::Bundle::Ptr& bundle)
{
    return bundle != nullptr ? Platform::RemoteObjFormat::getByteArray(bundle) : juce::MemoryBlock();
}

void send(int command, const juce::MemoryBlock& bytes)
{
    if (!bytes.isEmpty())
        sendData(command, bytes.getData(), static_cast<int>(bytes.getSize()));
}

/**
    What the unit tells of a zone, and the names of both: to whom (0xFF everybody; an answer says the mute otherwise
    than a report) and about which zone. The low half of a PGN tells those apart.
*/
int subjectOf(Platform::Parcel& parcel)
{
    constexpr int bits = 8;
    constexpr std::uint32_t lowHalf = 0xFFFF;
    parcel.setReadPosition(0);
    const auto pgn = Platform::PGNHelper::readPGNFromParcel(parcel);
    parcel.readByte();
    const int receiver = parcel.readByte();
    const auto subject = (static_cast<std::uint32_t>(pgn) & lowHalf) << bits | static_cast<std::uint32_t>(receiver);
    parcel.setReadPosition(Platform::PGNHelper::headSize);
    switch (pgn)
    {
    case Platform::pgnSupportedZones:
        return static_cast<int>(subject << bits);
    case Platform::pgnZoneConfiguration:
    case Platform::pgnZoneVolume:
    case Platform::pgnZoneParameters:
        return static_cast<int>(subject << bits | static_cast<std::uint32_t>(parcel.readByte()));
    default:
        return noSubject;
    }
}

} // namespace

void sendCanData(const Platform::Bundle::Ptr& bundle)
{
    send(EVENT_DATA_SEND_CAN, bytesOf(bundle));
}

void sendPgnBundle(const Platform::Bundle::Ptr& bundle)
{
    constexpr int logLine = 37;
    const auto bytes = bytesOf(bundle);
    if (bytes.isEmpty())
        return;
    send(EVENT_PGN_SEND_CAN, bytes);
    logger(logLine).info(
        "TxPGNParcelToNavico::" + Platform::hexPairs(bytes.getData(), static_cast<int>(bytes.getSize())) + "\n");
}

void sendPgnParcel(Platform::Parcel& parcel)
{
    sendDataUrgent(EVENT_PGN_SEND_CAN, parcel.data(), parcel.dataSize(), subjectOf(parcel));
    parcel.recycle();
}

void sendMediaInfo(const Platform::Bundle::Ptr& bundle)
{
    send(EVENT_MEDIA_INFO, bytesOf(bundle));
}

} // namespace EngineApi
