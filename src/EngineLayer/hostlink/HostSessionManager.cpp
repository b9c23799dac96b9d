#include "EngineLayer/hostlink/HostSessionManager.h"

#include "EngineApi/HostCommands.h"
#include "EngineLayer/hostlink/MonitorSendThread.h"
#include "factory/MsgSpecialHandler.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "kernel/Trace.h"
#include "lowlayer/HostcommDev.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"

#include <algorithm>
#include <array>
#include <utility>

namespace EngineLayer
{

using Kernel::Trace;

namespace
{

constexpr Platform::Log logger { "EngineLayer/HostSessionManager", "HostSessionManager" };

/** Line numbers under which the log is read and filtered. */
enum LogLine {
    lineResend = 126,
    lineSendError = 147,
    lineAcknowledged = 181,
    lineSendCommand = 401,
    lineHardwareFail = 406,
    lineReceiveCommand = 468
};

Platform::Counter givenUpFrames { "link.frames-given-up", "frames that the microcontroller never acknowledged" };
Platform::Counter refusedFrames { "link.frames-refused", "frames that are too long, or found too many waiting" };
Platform::Counter droppedFrames { "link.frames-dropped", "received frames whose component does not keep up" };
Platform::Counter damagedFrames { "link.frames-damaged", "received frames with a wrong checksum" };

constexpr const char* monitorGroup = "MonitorSendThread";
constexpr int monitorPriority = 5;
constexpr int noSequence = 65535; ///< matches no sequence byte

Kernel::Cause::Kind causeOf(int command)
{
    switch (command)
    {
    case EngineApi::EVENT_KEY:
        return Kernel::Cause::key;
    case EngineApi::EVENT_SRC_SWITCH:
        return Kernel::Cause::sourceSwitch;
    case EngineApi::EVENT_PGN_SEND_CAN: // the same number in both directions
        return Kernel::Cause::command;
    default:
        return Kernel::Cause::none;
    }
}

} // namespace

HostSessionManager::HostSessionManager()
    : lastSequence(noSequence)
    , previousSequence(noSequence)
{
}

HostSessionManager::~HostSessionManager() = default;

void HostSessionManager::initialize()
{
    LowLayer::HostcommDev::getInstance()->setClient(this);
    sequenceCounter = 0;
    lastSequence = previousSequence = noSequence;
    waitingForAcknowledgement = false;
    inFlight = nullptr;
    auto* engine = Kernel::SystemEngine::getInstance();
    engine->createGroup(monitorGroup, monitorPriority);
    monitor = new MonitorSendThread();
    monitor->assignId(Kernel::monitorSendThreadId);
    engine->registerComponent(monitorGroup, monitor.get());
}

void HostSessionManager::onStop()
{
    if (monitor != nullptr)
        monitor->stopWatching();
}

void HostSessionManager::onRelease()
{
    monitor = nullptr;
    LowLayer::HostcommDev::getInstance()->clearClient();
    sendQueue.clear();
    inFlight = nullptr;
    frameBuffers.clear();
}

void HostSessionManager::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                                       const Kernel::Payload& payload)
{
    switch (id)
    {
    case msgFrameReceived:
        frameReceived(arg1, payload);
        break;
    case msgAcknowledged:
        acknowledged(arg1, arg2);
        break;
    case msgSendNext:
        sendNext();
        break;
    case msgSendNow:
        sendNow(payload);
        break;
    case msgResend:
        resend(arg1);
        break;
    case msgSendFailed:
        sendFailed(arg1);
        break;
    default:
        break;
    }
}

// Sending, callers' threads.

void HostSessionManager::sendCommand(int command, std::initializer_list<int> values)
{
    std::vector<std::uint8_t> data;
    for (const int value : values)
        data.push_back(static_cast<std::uint8_t>(value & 0xff));
    sendData(command, data.data(), static_cast<int>(data.size()));
}

void HostSessionManager::sendData(int command, const void* data, int n)
{
    if (auto frame = blockFrame(command, data, n))
        queue(std::move(frame));
}

void HostSessionManager::sendDataUrgent(int command, const void* data, int n, int subject)
{
    auto frame = blockFrame(command, data, n);
    if (frame == nullptr)
        return;
    if (const auto lost = sendQueue.appendUrgent(new SendItem(std::move(frame), subject)))
        noteLoss(*lost, SendQueue::maxUrgent);
    Kernel::postUrgentSystemMessage(Kernel::hostSessionManagerId, msgSendNext, 0, 0);
}

HostDataFormat::Ptr HostSessionManager::blockFrame(int command, const void* data, int n)
{
    if (data == nullptr)
        n = 0;
    if (n < 0 || n > HostFrame::maxDataLength)
    {
        ++refusedSends;
        ++refusedFrames;
        logger().error("%s not sent: %d data bytes, a frame carries %d", EngineApi::hostCommand(command).sentName, n,
                       HostFrame::maxDataLength);
        return nullptr;
    }
    auto frame = HostDataFormat::obtainFrame();
    frame->build(command, { static_cast<const std::uint8_t*>(data), static_cast<std::size_t>(n) });
    return frame;
}

void HostSessionManager::queue(HostDataFormat::Ptr frame)
{
    const SendItem::Ptr item = new SendItem(std::move(frame), EngineApi::noSubject);
    const auto lost = sendQueue.append(item);
    if (lost != nullptr)
        noteLoss(*lost, SendQueue::maxNormal);
    if (lost != item)
        Kernel::postSystemMessage(Kernel::hostSessionManagerId, msgSendNext, 0, 0);
}

void HostSessionManager::noteLoss(const SendItem& lost, int limit)
{
    ++refusedSends;
    ++refusedFrames;
    if (!lossLogged.exchange(true))
        logger().error("%d frames wait, %s and what follows is not sent", limit,
                       EngineApi::hostCommand(lost.frame->commandOf()).sentName);
}

// Sending, group thread.

void HostSessionManager::sendNext()
{
    if (waitingForAcknowledgement || monitor == nullptr)
        return;
    inFlight = sendQueue.takeNext();
    if (inFlight == nullptr)
    {
        lossLogged = false;
        monitor->stopWatching();
        return;
    }
    ++sequenceCounter;
    inFlight->frame->setSequence(sequenceCounter);
    waitingForAcknowledgement = true;
    ++sent;
    sentAt = Platform::Clock::now();
    transmit(*inFlight->frame);
    Trace::noteFrom(inFlight->origin, Trace::Kind::frameSent, inFlight->frame->commandOf(), sequenceCounter,
                    inFlight->frame->getFrameLength());
    inFlight->cause.reached(Kernel::Cause::answer);
    monitor->watch(sequenceCounter);
}

void HostSessionManager::sendNow(const Kernel::Payload& payload)
{
    if (auto* frame = Kernel::payloadAs<HostDataFormat>(payload))
    {
        transmit(*frame);
        Trace::note(Trace::Kind::confirmationSent, frame->getBytes()[HostFrame::sequenceAt]);
        HostDataFormat::releaseFrame(*frame);
    }
}

void HostSessionManager::transmit(const HostDataFormat& frame)
{
    const bool debug = Platform::CorvaneConfig::isSystemDebug();
    if (debug)
        logger(lineSendCommand)
            .info("Host Send cmd: " + juce::String(EngineApi::hostCommand(frame.commandOf()).sentName));
    // A write that failed is made good by the resends.
    if (!LowLayer::HostcommDev::getInstance()->write(frame.getBytes(), frame.getFrameLength()) && debug)
        logger(lineHardwareFail).error("Host Send data hardware fail!");
}

void HostSessionManager::acknowledged(int sequence, int value)
{
    logger(lineAcknowledged).error("MCU received ACK arg1: %d, arg2: %d", sequence, value);
    if (!waitingForAcknowledgement || sequence != sequenceCounter || inFlight == nullptr)
        return;
    roundTripTimes.add(std::chrono::duration_cast<Platform::Histogram::Duration>(Platform::Clock::now() - sentAt));
    Trace::note(Trace::Kind::frameAcknowledged, sequence);
    releaseInFlight();
    monitor->stopWatching();
    sendNext();
}

void HostSessionManager::resend(int sequence)
{
    // The monitor may have asked just before the acknowledgement came; by now the next frame can be in flight.
    if (isStale(sequence))
        return;
    if (waitingForAcknowledgement && inFlight != nullptr)
    {
        logger(lineResend)
            .error("MCU ReSend ID! " + juce::String(EngineApi::hostCommand(inFlight->frame->commandOf()).sentName));
        ++resent;
        transmit(*inFlight->frame);
        Trace::note(Trace::Kind::frameResent, inFlight->frame->commandOf(), sequence);
        return;
    }
    waitingForAcknowledgement = false;
    sendNext();
}

void HostSessionManager::sendFailed(int sequence)
{
    if (isStale(sequence))
        return;
    if (inFlight != nullptr)
    {
        ++givenUpFrames;
        logger(lineSendError)
            .error("MCU Send Error ID! " + juce::String(EngineApi::hostCommand(inFlight->frame->commandOf()).sentName));
        Trace::note(Trace::Kind::frameGivenUp, inFlight->frame->commandOf(), sequence);
        releaseInFlight();
    }
    waitingForAcknowledgement = false;
    sendNext();
}

void HostSessionManager::releaseInFlight()
{
    inFlight = nullptr;
    waitingForAcknowledgement = false;
}

// Receiving, group thread.

void HostSessionManager::onData(int kind, int length, juce::ReferenceCountedObject* data)
{
    const auto* bytes = dynamic_cast<LowLayer::BytePool*>(data);
    if (kind == LowLayer::hostBytesReceived && bytes != nullptr)
        parser.appendReceived(bytes->dataPointer(), std::min(length, bytes->length()), *this);
}

void HostSessionManager::onAcknowledgement(int sequence, int value)
{
    lastReceived = Platform::Clock::now();
    Kernel::postSystemMessage(Kernel::hostSessionManagerId, msgAcknowledged, sequence, value);
}

void HostSessionManager::onFrame(const std::uint8_t* frame, int length)
{
    const int sequence = frame[HostFrame::sequenceAt];
    lastReceived = Platform::Clock::now();
    if (sequence == lastSequence || sequence == previousSequence)
    {
        ++repeated;
        return;
    }
    ++received;
    previousSequence = std::exchange(lastSequence, sequence);
    auto buffer = frameBuffers.obtain();
    buffer->assign(frame, length);
    Kernel::postSystemMessage(Kernel::hostSessionManagerId, msgFrameReceived, length, 0, std::move(buffer));
}

void HostSessionManager::onChecksumError()
{
    ++damaged;
    ++damagedFrames;
    logger().error("MCU Recv CheckSum Error");
}

void HostSessionManager::frameReceived(int length, const Kernel::Payload& payload)
{
    auto* buffer = Kernel::payloadAs<LowLayer::BytePool>(payload);
    if (buffer == nullptr || length > buffer->length() || length < HostFrame::dataAt)
        return;
    const auto* frame = buffer->dataPointer();
    acknowledge(frame[HostFrame::sequenceAt]);
    if (frame[0] == HostFrame::sync1)
        dispatch(frame, length);
    buffer->recycle();
}

void HostSessionManager::acknowledge(int sequence)
{
    auto frame = HostDataFormat::obtainFrame();
    constexpr std::array<std::uint8_t, 1> accepted { 0 };
    frame->build(0, accepted);
    frame->setSequence(sequence);
    Kernel::postSystemMessage(Kernel::hostSessionManagerId, msgSendNow, 0, 0, std::move(frame));
}

void HostSessionManager::dispatch(const std::uint8_t* frame, int length)
{
    const int command = HostFrame::command(frame);
    Kernel::Cause::is(causeOf(command));
    Trace::note(Trace::Kind::frameReceived, command, frame[HostFrame::sequenceAt], length);
    if (Platform::CorvaneConfig::isSystemDebug())
        logger(lineReceiveCommand).info("Host Recv cmd: " + juce::String(EngineApi::hostCommand(command).receivedName));
    noteIfUnknown(command);
    // Nothing reaches the managers before the answer to the request for the last memory.
    if (!synchronised && command != EngineApi::EVENT_GET_LAST_MEMORY)
        return;
    const auto receiver = Factory::MsgSpecialHandler::getInstance()->componentForHostCommand(command);
    if (!hasRoom(receiver, command))
        return;
    const int dataLength = std::max(0, length - HostFrame::overhead);
    LowLayer::BytePool::Ptr data;
    if (dataLength > 0)
    {
        data = frameBuffers.obtain();
        data->assign(frame + HostFrame::dataAt, dataLength);
    }
    Kernel::postSystemMessage(receiver, Kernel::MSG_HOST_EVENT, command, dataLength, std::move(data));
    synchronised = true;
}

void HostSessionManager::noteIfUnknown(int command)
{
    auto noted = unknownCommands[static_cast<std::size_t>(command)];
    if (noted || *EngineApi::hostCommand(command).receivedName != '\0')
        return;
    noted = true;
    logger().error("frames of command %d are not known and are ignored", command);
}

bool HostSessionManager::hasRoom(Kernel::ComponentId receiver, int command)
{
    const auto waiting = Kernel::SystemEngine::getInstance()->countQueued(receiver);
    if (waiting == 0)
        overrun.erase(receiver);
    if (waiting < maxWaitingEvents)
        return true;
    ++droppedEvents;
    ++droppedFrames;
    if (overrun.insert(receiver).second)
        logger().error("%d messages wait for component %d, %s and what follows is dropped", static_cast<int>(waiting),
                       receiver, EngineApi::hostCommand(command).receivedName);
    return false;
}

HostSessionManager::Status HostSessionManager::getStatus() const
{
    return { sent, received, resent, givenUpFrames.get(), damaged, repeated, sendQueue.size(), lastReceived };
}

} // namespace EngineLayer

namespace EngineApi
{

namespace
{

EngineLayer::HostSessionManager& session()
{
    return *EngineLayer::HostSessionManager::getInstance();
}

} // namespace

void sendCommand(int command, std::initializer_list<int> values)
{
    session().sendCommand(command, values);
}

void sendData(int command, const void* data, int length)
{
    session().sendData(command, data, length);
}

void sendDataUrgent(int command, const void* data, int length, int subject)
{
    session().sendDataUrgent(command, data, length, subject);
}

} // namespace EngineApi
