#pragma once

#include "EngineApi/WiredRemote.h"
#include "EngineLayer/WiredRemoteProtocol.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "platform/SerialPort.h"

#include <chrono>
#include <memory>

namespace EngineLayer
{

/**
    The wired remote: sends text and brightness over a shared bus whose transmitter a line switches, keeps the two lines
    that come back after a temporary text, and posts the remote's keys to the key manager.

    Its calls come from any thread. One lock covers each of them whole, so that neither the bytes of a command nor the
    commands of a call are parted. A command takes some 20 ms. A remote that takes no bytes holds its callers for a
    second at most and is then left alone for thirty times as long; without a device every call fails at once. What was
    not sent is counted, and the stored lines are shown when the remote is back.
*/
class TLX70Dev : public Kernel::ComponentTask,
                 public Platform::SerialCallBack,
                 public EngineApi::WiredRemote,
                 public juce::MultiTimer,
                 public Kernel::Singleton<TLX70Dev>
{
public:
    static constexpr int refreshTimer = 1; ///< repeats the brightness for a remote that was plugged in meanwhile
    static constexpr int restoreTimer = 2; ///< ends a temporary text
    static constexpr int refreshMs = 2000;
    static constexpr int startBrightnessSends = 7;

    ~TLX70Dev() override;

    /** Opens the port; a remote that is not there yet is waited for. Message thread. */
    void initialize() override;
    void onStop() override;
    void onRelease() override;
    /** It receives none. */
    void handleMessage(juce::int32, juce::int32, juce::int32, const Kernel::Payload&) override {}

    /** One command on the bus. True when the port has taken every byte. */
    bool writeBytes(const void* data, int n);

    /** False for an empty text, and for a column outside 0 to 31, which is logged; neither is remembered. */
    bool showText(int row, int column, const juce::String& text, bool temporary) override;
    void clearRow(int row) override;
    void clearDisplay(bool forgetStored) override;
    /** Another level than 0 to 15 is logged and changes nothing. */
    void setDimmer(int level) override;
    void restoreAfter(int milliseconds) override;
    bool isRestorePending() override;
    /** True when the display shows the stored lines, and nothing else. */
    bool restore() override;

    /** Port reader thread. */
    void onReceive(const void* data, int length) override;
    /** Message thread. */
    void timerCallback(int timerId) override;

private:
    friend class Kernel::Singleton<TLX70Dev>;
    TLX70Dev() = default;

    using Clock = std::chrono::steady_clock;

    struct Line
    {
        int row = 0;
        int column = 0;
        juce::String text;
    };

    bool send(const WiredRemoteProtocol::Bytes& command);
    bool show(const Line& line);
    bool showStored(const Line& line) { return line.text.isEmpty() || show(line); }
    bool transmit(const void* data, int n);
    void refresh();
    void endTemporaryText();

    juce::CriticalSection writeLock; ///< guards everything below
    std::unique_ptr<Platform::SerialPort> port;
    int dimmerLevel = WiredRemoteProtocol::highestLevel;
    Line storedLine1;
    Line storedLine2;
    int startBrightnessSent = 0;
    int unsent = 0; ///< commands since the remote took the last one before it was lost
    Clock::time_point leftAloneUntil;
};

} // namespace EngineLayer
