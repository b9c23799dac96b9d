#pragma once

#include "EngineApi/WiredRemote.h"
#include "EngineLayer/wiredremote/WiredRemoteProtocol.h"
#include "kernel/DeviceWorker.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "platform/base/Threads.h"
#include "platform/base/Time.h"
#include "platform/devices/SerialPort.h"

#include <chrono>
#include <deque>
#include <memory>
#include <optional>

namespace EngineLayer
{

/**
    The wired remote: sends text and brightness over a shared bus whose transmitter a line switches, keeps the two lines
    that come back after a temporary text, and posts the remote's keys to the key manager.

    Its calls come from any thread and return at once: they queue commands, which the thread "WiredRemote" sends, some
    20 ms each. One lock covers each call whole, so that the commands of two calls are not parted. A command that a
    newer one makes needless before it was its turn is not sent. A remote that takes no bytes holds the thread for a
    second at most and is then left alone for thirty times as long; without a device every call answers false. What was
    not sent is counted, and the stored lines are shown when the remote is back.
*/
class TLX70Dev : public Kernel::ComponentTask,
                 public Platform::SerialCallBack,
                 public EngineApi::WiredRemote,
                 public Platform::MultiTimer,
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

    /** One command for the bus. True when it was taken to be sent. */
    bool writeBytes(const void* data, int n);

    /** False for an empty text, and for a column outside 0 to 31, which is logged; neither is remembered. */
    bool showText(int row, int column, const juce::String& text, bool temporary) override;
    bool showLasting(int row, int column, const juce::String& text) override;
    void clearRow(int row) override;
    void clearDisplay(bool forgetStored) override;
    /** Another level than 0 to 15 is logged and changes nothing. */
    void setDimmer(int level) override;
    void restoreAfter(int milliseconds) override;
    bool isRestorePending() override;
    bool restore() override;

    struct Status
    {
        bool isThere = false;
        juce::String line1, line2; ///< as they are kept
        int dimmer = 0;            ///< 0 to 15
        std::size_t waiting = 0;   ///< commands
    };
    /** Any thread; it does not wait for the remote. */
    Status getStatus() const;

    /** Port reader thread. */
    void onReceive(const void* data, int length) override;
    void onDeviceBack() override;
    /** Message thread. */
    void timerCallback(int timerId) override;

private:
    friend class Kernel::Singleton<TLX70Dev>;
    TLX70Dev() = default;

    using Clock = Platform::Clock;

    struct Line
    {
        int row = 0;
        int column = 0;
        juce::String text;
    };

    bool isReachable() const;
    bool send(const WiredRemoteProtocol::Bytes& command);
    void enqueue(WiredRemoteProtocol::Bytes command);
    bool accepts(const Line& line) const;
    bool show(const Line& line);
    bool showKept(const Line& line) { return line.text.isEmpty() || show(line); }
    void refresh();
    void endTemporaryText();
    void noteUnsent();

    // The thread "WiredRemote".
    void sendWaiting();
    std::optional<WiredRemoteProtocol::Bytes> takeNext();
    /** True when the port has taken every byte. */
    bool transmit(const WiredRemoteProtocol::Bytes& command);
    void wasSent(const WiredRemoteProtocol::Bytes& command);

    Platform::Mutex lock; ///< guards everything below but the port's own calls
    std::unique_ptr<Platform::SerialPort> port;
    std::deque<WiredRemoteProtocol::Bytes> waiting;
    int dimmerLevel = WiredRemoteProtocol::highestLevel;
    Line storedLine1;
    Line storedLine2;
    Line lastingText;
    int startBrightnessSent = 0;
    int unsent = 0;       ///< commands since the remote took the last one before it was lost
    bool isBlank = false; ///< the remote was away, and shows nothing of what was sent before
    Clock::time_point leftAloneUntil;
    Kernel::DeviceWorker worker { "WiredRemote" }; ///< last: its thread ends before what it uses
};

} // namespace EngineLayer
