#include "EngineLayer/TLX70Dev.h"

#include "EngineApi/KeyCodes.h"
#include "EngineLayer/UnitLines.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/Configuration.h"
#include "platform/Logger.h"

namespace EngineLayer
{

namespace
{

namespace Protocol = WiredRemoteProtocol;

constexpr const char* logFile = "factory\\../EngineLayer/TLX70Dev";
constexpr const char* logTag = "TLX70Dev";

/** Line numbers under which the log is read and filtered. */
enum LogLine { lineCreate = 62, lineOpen = 70, lineSend = 117, lineReceive = 143 };

constexpr const char* portName = "COM5:";
constexpr int baudRate = 57600;

constexpr int secondRow = 1;
/** Columns up to this one are taken; those beyond the display show nothing. */
constexpr int highestColumn = 31;
constexpr int startBrightness = 3;

/** What the transmitter needs before the first byte, and the last byte before the transmitter goes off. */
constexpr int switchingMs = 10;
/** A write that failed may cost its callers this share of their time. */
constexpr int restAfterFailure = 30;

Platform::Logger& logger()
{
    return *Platform::Logger::getInstance();
}

void logTraffic(LogLine line, const char* direction, const void* data, int length)
{
    if (Platform::CorvaneConfig::isSystemDebug())
        logger().logDebug(logFile, line, logTag, juce::String(direction) + Platform::hexPairs(data, length));
}

} // namespace

TLX70Dev::~TLX70Dev()
{
    // Its reader thread calls this object.
    port.reset();
}

void TLX70Dev::initialize()
{
    logger().logDebug(logFile, lineCreate, logTag, "onCreate");
    if (port == nullptr)
    {
        port = std::make_unique<Platform::SerialPort>(*this);
        const bool opened = port->open(portName, baudRate, true);
        logger().logDebug(logFile, lineOpen, logTag, "serial open: %d", opened ? 1 : 0);
    }
    drive(UnitLine::remoteTransmit, false);
    startTimer(refreshTimer, refreshMs);
}

void TLX70Dev::onStop()
{
    stopTimer(refreshTimer);
    stopTimer(restoreTimer);
    // Without the lock: closing ends a write that waits under it.
    if (port != nullptr)
        port->close();
}

void TLX70Dev::onRelease()
{
    const juce::ScopedLock guard(writeLock);
    port.reset();
}

// Sending.

bool TLX70Dev::writeBytes(const void* data, int n)
{
    if (data == nullptr || n < 1)
        return false;
    const juce::ScopedLock guard(writeLock);
    if (port == nullptr || !port->isOpen())
        return false;
    if (transmit(data, n))
        return true;
    if (unsent++ == 0)
        logger().logError(logFile, __LINE__, logTag, "the remote takes no commands");
    return false;
}

bool TLX70Dev::transmit(const void* data, int n)
{
    const auto begin = Clock::now();
    if (!port->isConnected() || begin < leftAloneUntil)
        return false;
    logTraffic(lineSend, "send: ", data, n);
    drive(UnitLine::remoteTransmit, true);
    juce::Thread::sleep(switchingMs);
    const bool taken = port->write(data, n) == n;
    juce::Thread::sleep(switchingMs);
    drive(UnitLine::remoteTransmit, false);
    if (!taken)
    {
        const auto end = Clock::now();
        leftAloneUntil = end + restAfterFailure * (end - begin);
    }
    return taken;
}

bool TLX70Dev::send(const Protocol::Bytes& command)
{
    return writeBytes(command.data(), static_cast<int>(command.size()));
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
    if (text.isEmpty())
        return false;
    if (column < 0 || column > highestColumn)
    {
        logger().logError(logFile, __LINE__, logTag, "no text at column %d, the highest is %d", column, highestColumn);
        return false;
    }
    const Line line { row, column, text };
    const juce::ScopedLock guard(writeLock);
    if (!temporary)
    {
        (row == secondRow ? storedLine2 : storedLine1) = line;
        stopTimer(restoreTimer);
    }
    return show(line);
}

void TLX70Dev::clearRow(int row)
{
    send(Protocol::encodeClearRow(row));
}

void TLX70Dev::clearDisplay(bool forgetStored)
{
    const juce::ScopedLock guard(writeLock);
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
        logger().logError(logFile, __LINE__, logTag, "no dimmer level %d, the highest is %d", level,
                          Protocol::highestLevel);
        return;
    }
    const juce::ScopedLock guard(writeLock);
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
    const juce::ScopedLock guard(writeLock);
    stopTimer(restoreTimer);
    bool shown = send(Protocol::encodeClearDisplay());
    shown = showStored(storedLine1) && shown;
    // A first line that wraps has taken the second row too.
    if (storedLine1.row == 0)
        shown = showStored(storedLine2) && shown;
    return shown;
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
    const juce::ScopedLock guard(writeLock);
    if (startBrightnessSent < startBrightnessSends && send(Protocol::encodeStartBrightness(startBrightness)))
        ++startBrightnessSent;
    const bool reached = send(Protocol::encodeDimmerA(dimmerLevel)) && send(Protocol::encodeDimmerB(dimmerLevel));
    // A temporary text that was sent meanwhile is not cut short: its end restores the lines.
    if (!reached || unsent == 0 || isRestorePending())
        return;
    logger().logInfo(logFile, __LINE__, logTag, "the remote is there, %d commands were not sent", unsent);
    unsent = 0;
    restore();
}

void TLX70Dev::endTemporaryText()
{
    stopTimer(restoreTimer);
    const juce::ScopedLock guard(writeLock);
    // While the lock was waited for, another temporary text may have begun.
    if (!isRestorePending())
        restore();
}

// Receiving.

void TLX70Dev::onReceive(const void* data, int length)
{
    if (data == nullptr)
        return;
    logTraffic(lineReceive, "recv: ", data, length);
    if (const auto key = Protocol::decodeKey(data, length))
        Kernel::postSystemMessage(Kernel::keyManagerId, Kernel::MSG_WIRED_REMOTE_KEY, EngineApi::originWiredRemote,
                                  *key);
}

} // namespace EngineLayer
