#include "EngineLayer/wiredremote/TLX70Dev.h"

#include "EngineApi/KeyCodes.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"
#include "platform/devices/UnitLines.h"

#include <utility>

namespace EngineLayer
{

namespace
{

Platform::Counter commandsUnsent { "remote.commands-unsent", "commands that the wired remote did not take" };

namespace Protocol = WiredRemoteProtocol;

constexpr Platform::Log logger { "factory\\../EngineLayer/TLX70Dev", "TLX70Dev" };

/** Line numbers under which the log is read and filtered. */
enum LogLine { lineCreate = 62, lineOpen = 70, lineSend = 117, lineReceive = 143 };

constexpr const char* portName = "COM5:";

constexpr int secondRow = 1;
/** Columns up to this one are taken; those beyond the display show nothing. */
constexpr int highestColumn = 31;
constexpr int startBrightness = 3;

/** What the transmitter needs before the first byte, and the last byte before the transmitter goes off. */
constexpr std::chrono::milliseconds switchingTime { 10 };
/** A remote that takes no bytes may hold its thread for this share of the time. */
constexpr int restAfterFailure = 30;

/** Texts that cover each other leave far fewer; of more the oldest is not sent. */
constexpr std::size_t mostWaiting = 32;

/** Of the worker's jobs. */
enum Job { jobTransmitterOff, jobSend };

void logTraffic(LogLine line, const char* direction, const void* data, int length)
{
    if (Platform::CorvaneConfig::isSystemDebug())
        logger(line).debug(juce::String(direction) + Platform::hexPairs(data, length));
}

} // namespace

TLX70Dev::~TLX70Dev()
{
    // Its reader thread calls this object.
    if (port != nullptr)
        port->close();
}

void TLX70Dev::initialize()
{
    logger(lineCreate).debug("onCreate");
    if (port == nullptr)
    {
        port = std::make_unique<Platform::SerialPort>(*this);
        const bool opened = port->open(portName, Protocol::baudRate, true);
        logger(lineOpen).debug("serial open: %d", opened ? 1 : 0);
    }
    worker.post(jobTransmitterOff, [] { Platform::drive(Platform::remoteTransmitLine, false); });
    startTimer(refreshTimer, refreshMs);
}

void TLX70Dev::onStop()
{
    stopTimer(refreshTimer);
    stopTimer(restoreTimer);
    // Closing ends a write that waits.
    if (port != nullptr)
        port->close();
}

void TLX70Dev::onRelease()
{
    const std::lock_guard guard(lock);
    port.reset();
}

// Sending.

bool TLX70Dev::writeBytes(const void* data, int n)
{
    if (data == nullptr || n < 1)
        return false;
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return send({ bytes, bytes + n });
}

bool TLX70Dev::send(const Protocol::Bytes& command)
{
    const std::lock_guard guard(lock);
    if (command.empty() || port == nullptr || !port->isOpen())
        return false;
    if (isReachable())
        enqueue(command);
    else
        noteUnsent();
    return isReachable();
}

bool TLX70Dev::isReachable() const
{
    return port != nullptr && port->isConnected() && Platform::hasCome(leftAloneUntil);
}

void TLX70Dev::noteUnsent()
{
    ++commandsUnsent;
    if (unsent++ == 0)
        logger().error("the remote takes no commands");
}

void TLX70Dev::enqueue(Protocol::Bytes command)
{
    std::erase_if(waiting, [&](const auto& older) { return Protocol::supersedes(command, older); });
    if (waiting.size() == mostWaiting)
    {
        waiting.pop_front();
        ++unsent, ++commandsUnsent; // The restore makes it good.
    }
    waiting.push_back(std::move(command));
    worker.post(jobSend, [this] { sendWaiting(); });
}

void TLX70Dev::sendWaiting()
{
    while (const auto command = takeNext())
        if (transmit(*command))
            wasSent(*command);
}

std::optional<Protocol::Bytes> TLX70Dev::takeNext()
{
    const std::lock_guard guard(lock);
    if (waiting.empty() || worker.isStopping())
        return std::nullopt;
    auto command = std::move(waiting.front());
    waiting.pop_front();
    return command;
}

bool TLX70Dev::transmit(const Protocol::Bytes& command)
{
    {
        const std::lock_guard guard(lock);
        if (!isReachable())
        {
            noteUnsent();
            return false;
        }
    }
    const int size = static_cast<int>(command.size());
    logTraffic(lineSend, "send: ", command.data(), size);
    Platform::drive(Platform::remoteTransmitLine, true);
    Platform::sleepFor(switchingTime);
    // Of the remote alone: a line that is slow to drive is none of its doing.
    const auto begin = Clock::now();
    const bool taken = port->write(command.data(), size) == size;
    const auto end = Clock::now();
    Platform::sleepFor(switchingTime);
    Platform::drive(Platform::remoteTransmitLine, false);
    if (taken)
        return true;
    const std::lock_guard guard(lock);
    leftAloneUntil = end + restAfterFailure * (end - begin);
    noteUnsent();
    return false;
}

void TLX70Dev::wasSent(const Protocol::Bytes& command)
{
    const std::lock_guard guard(lock);
    if (command == Protocol::encodeStartBrightness(startBrightness))
        ++startBrightnessSent;
    // The refresh ends with this one. A temporary text is not cut short: its end restores the lines.
    if (command != Protocol::encodeDimmerB(dimmerLevel) || (unsent == 0 && !isBlank) || isRestorePending())
        return;
    logger().info("the remote is there, %d commands were not sent", unsent);
    unsent = 0;
    isBlank = false;
    restore();
}

bool TLX70Dev::accepts(const Line& line) const
{
    if (line.column >= 0 && line.column <= highestColumn)
        return true;
    logger().error("no text at column %d, the highest is %d", line.column, highestColumn);
    return false;
}

bool TLX70Dev::show(const Line& line)
{
    if (line.row >= 0 && line.row < Protocol::rows)
        return send(Protocol::encodeText(line.row, line.column, line.text));
    const int fitting = Protocol::columns - line.column;
    const auto rest = line.text.substring(fitting);
    return send(Protocol::encodeText(0, line.column, line.text.substring(0, fitting))) &&
           (rest.isEmpty() || send(Protocol::encodeText(secondRow, 0, rest)));
}

bool TLX70Dev::showText(int row, int column, const juce::String& text, bool temporary)
{
    const Line line { row, column, text };
    if (text.isEmpty() || !accepts(line))
        return false;
    const std::lock_guard guard(lock);
    if (!temporary)
    {
        (row == secondRow ? storedLine2 : storedLine1) = line;
        stopTimer(restoreTimer);
    }
    return show(line);
}

bool TLX70Dev::showLasting(int row, int column, const juce::String& text)
{
    const Line line { row, column, text };
    if (!accepts(line))
        return false;
    const std::lock_guard guard(lock);
    lastingText = line;
    return showKept(line);
}

void TLX70Dev::clearRow(int row)
{
    send(Protocol::encodeClearRow(row));
}

void TLX70Dev::clearDisplay(bool forgetStored)
{
    const std::lock_guard guard(lock);
    if (forgetStored)
    {
        storedLine1 = {};
        storedLine2 = {};
    }
    send(Protocol::encodeClearDisplay());
}

void TLX70Dev::setDimmer(int level)
{
    if (level < 0 || level > Protocol::highestLevel)
    {
        logger().error("no dimmer level %d, the highest is %d", level, Protocol::highestLevel);
        return;
    }
    const std::lock_guard guard(lock);
    dimmerLevel = level;
    send(Protocol::encodeDimmerA(level));
    send(Protocol::encodeDimmerB(level));
}

void TLX70Dev::restoreAfter(int milliseconds)
{
    if (milliseconds < 1)
        stopTimer(restoreTimer);
    else
        startTimer(restoreTimer, milliseconds);
}

bool TLX70Dev::isRestorePending()
{
    return isTimerRunning(restoreTimer);
}

bool TLX70Dev::restore()
{
    const std::lock_guard guard(lock);
    stopTimer(restoreTimer);
    bool shown = send(Protocol::encodeClearDisplay());
    shown = showKept(storedLine1) && shown;
    // A first line that wraps has taken the second row too.
    if (storedLine1.row == 0)
        shown = showKept(storedLine2) && shown;
    return showKept(lastingText) && shown;
}

// Timers.

void TLX70Dev::timerCallback(int timerId)
{
    if (timerId == refreshTimer)
        refresh();
    else if (timerId == restoreTimer)
        endTemporaryText();
}

void TLX70Dev::refresh()
{
    const std::lock_guard guard(lock);
    if (startBrightnessSent < startBrightnessSends)
        send(Protocol::encodeStartBrightness(startBrightness));
    if (send(Protocol::encodeDimmerA(dimmerLevel)))
        send(Protocol::encodeDimmerB(dimmerLevel));
}

void TLX70Dev::endTemporaryText()
{
    stopTimer(restoreTimer);
    const std::lock_guard guard(lock);
    // Before the lock was had, another temporary text may have begun.
    if (!isRestorePending())
        restore();
}

TLX70Dev::Status TLX70Dev::getStatus() const
{
    const std::lock_guard guard(lock);
    return { isReachable(), storedLine1.text, storedLine2.text, dimmerLevel, waiting.size() };
}

// Receiving.

void TLX70Dev::onReceive(const void* data, int length)
{
    if (data == nullptr)
        return;
    logTraffic(lineReceive, "recv: ", data, length);
    const Kernel::CauseScope cause({ Kernel::Cause::key, Platform::Clock::now() });
    if (const auto key = Protocol::decodeKey(data, length))
        Kernel::postSystemMessage(Kernel::keyManagerId, Kernel::MSG_WIRED_REMOTE_KEY, EngineApi::originWiredRemote,
                                  *key);
}

void TLX70Dev::onDeviceBack()
{
    const std::lock_guard guard(lock);
    isBlank = true;
}

} // namespace EngineLayer
