#include "EngineLayer/wiredremote/TLX70Dev.h"

#include "EngineApi/KeyCodes.h"
#include "doubles/LinesDouble.h"
#include "doubles/SerialPortDouble.h"
#include "kernel/MessageIds.h"
#include "platform/devices/UnitLines.h"
#include "support/Eventually.h"
#include "support/KernelFixture.h"
#include "support/LogCapture.h"

#include <map>
#include <mutex>
#include <thread>

using namespace Platform;
using namespace EngineApi;
using namespace EngineLayer;
using namespace Platform::doubles;
using Bytes = WiredRemoteProtocol::Bytes;
using Commands = std::vector<Bytes>;

namespace
{

constexpr const char* portName = "COM5:";

/** The command on the wire: its first byte, the text, and the end of the text. */
Bytes textAt(int first, const std::string& text)
{
    Bytes bytes { static_cast<std::uint8_t>(first) };
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(0);
    return bytes;
}

const Bytes clearCommand { 0x8A, 0x9A };
const Bytes brightness { 0x8A, 0xB3 };
const std::string blankRow(16, ' ');

class TLX70DevTest : public KernelFixture
{
protected:
    TLX70DevTest()
    {
        SerialPortDouble::reset();
        LinesDouble::reset();
        SerialPortDouble::onWrite(portName,
                                  [this](const juce::MemoryBlock& taken)
                                  {
                                      const auto* bytes = static_cast<const std::uint8_t*>(taken.getData());
                                      const std::lock_guard guard(commandsLock);
                                      commands.emplace_back(bytes, bytes + taken.getSize());
                                      sentInTheDark += LinesDouble::getPin(remoteTransmitLine) == 1 ? 0 : 1;
                                  });
    }
    ~TLX70DevTest() override
    {
        Kernel::DeviceWorker::drainAll();
        EXPECT_EQ(sentInTheDark, 0) << "writes while the transmitter was off";
        EXPECT_EQ(LinesDouble::getPin(remoteTransmitLine), 0);
        SerialPortDouble::reset();
    }

    void start() { add(&remote, Kernel::wiredRemoteId); }
    void refresh() { remote.timerCallback(TLX70Dev::refreshTimer); }
    Commands sent()
    {
        Kernel::DeviceWorker::drainAll();
        return std::exchange(commands, {});
    }
    static std::vector<LinesDouble::PinCall> pinCalls()
    {
        Kernel::DeviceWorker::drainAll();
        return LinesDouble::takePinCalls();
    }

    TLX70Dev& remote = *TLX70Dev::getInstance();
    std::mutex commandsLock; ///< where the remote runs on its thread
    Commands commands;
    int sentInTheDark = 0;
};

} // namespace

TEST_F(TLX70DevTest, KeysAreTheKnownBytesInReadsOfOne)
{
    start();
    const std::map<int, int> keys {
        { 0xA1, 4 },   { 0xA2, 3 },   { 0xA3, 2 },       { 0xA4, 66 }, { 0xA5, 125 }, { 0xA6, 6 },  { 0xA7, 54 },
        { 0xA8, 131 }, { 0xA9, 132 }, { 0xAB, 0x10008 }, { 0xAC, 55 }, { 0xAD, 42 },  { 0xAE, 81 }, { 0xAF, 80 },
    };
    for (int value = 0; value <= 0xFF; ++value)
    {
        const auto byte = static_cast<std::uint8_t>(value);
        ASSERT_TRUE(SerialPortDouble::receive(portName, &byte, 1));
        if (const auto known = keys.find(value); known != keys.end())
            expectPosted(Kernel::keyManagerId, Kernel::MSG_WIRED_REMOTE_KEY, 1, known->second);
        expectNothingPosted();
    }
    SerialPortDouble::receive(portName, "\xA1\xA2", 2);
    SerialPortDouble::receive(portName, "\xA1", 0);
    expectNothingPosted();
}

TEST_F(TLX70DevTest, TextsGoWhereTheyFit)
{
    start();
    constexpr const char* longText = "0123456789abcdefghijklmnopqrstuvwxyz";
    const struct
    {
        int row;
        int column;
        juce::String text;
        Commands writes; ///< none: refused
    } cases[] {
        { 0, 0, "FM 98.5", { textAt(0xE0, "FM 98.5") } },
        { 1, 11, " Mute", { textAt(0xFB, " Mute") } },
        { 1, 0, juce::String::fromUTF8("\x7f\xc3\xa4\xe2\x82\xac\xf0\x9f\x8e\xb5 ~\n"), { textAt(0xF0, "???? ~?") } },
        { 5, 10, "123456", { textAt(0xEA, "123456") } },
        { 5, 10, "123456789", { textAt(0xEA, "123456"), textAt(0xF0, "789") } },
        { -1, 0, longText, { textAt(0xE0, "0123456789abcdef"), textAt(0xF0, "ghijklmnopqrstuv") } },
        { 0, 0, "", {} },
        { 0, 16, "A", {} },
        { 5, 31, "A", {} },
        { 1, 32, "A", {} },
        { 1, -1, "A", {} },
        { 5, std::numeric_limits<int>::min(), "A", {} },
    };
    for (const auto& each : cases)
    {
        EXPECT_EQ(remote.showText(each.row, each.column, each.text, true), !each.writes.empty()) << each.text;
        EXPECT_EQ(sent(), each.writes);
    }
    for (const int row : { -1, 0, 1, 2 })
        remote.clearRow(row);
    EXPECT_EQ(sent(), (Commands { textAt(0xE0, blankRow), textAt(0xF0, blankRow) }));
}

/** A source tells its time twenty times a second, a volume is turned: the remote is behind and shows what is new. */
TEST_F(TLX70DevTest, TextsThatAreCoveredBeforeTheirTurnAreNotSent)
{
    start();
    for (int volume = 1; volume <= 1000; ++volume)
    {
        remote.setDimmer(volume % 16);
        remote.clearRow(1);
        EXPECT_TRUE(remote.showText(1, 1, "Zone1 Vol." + juce::String(volume), true));
        remote.showText(0, 0, juce::String(volume) + " s", false);
    }
    EXPECT_EQ(sent(), (Commands { { 0x8A, 0xC8 },
                                  { 0x8A, 0xD8 },
                                  textAt(0xF0, blankRow),
                                  textAt(0xF1, "Zone1 Vol.1000"),
                                  textAt(0xE0, "1000 s") }));
    remote.showText(1, 0, "98.5 MHz", false);
    remote.showText(1, 11, " Mute", true);
    remote.showText(1, 0, "98.5", true);
    EXPECT_EQ(sent(), (Commands { textAt(0xF0, "98.5 MHz"), textAt(0xFB, " Mute"), textAt(0xF0, "98.5") }))
        << "what sticks out was to be seen";
    remote.showText(0, 3, "gone", true);
    remote.clearDisplay(false);
    EXPECT_EQ(sent(), Commands { clearCommand });

    // Nothing covers anything: of more than 32 the oldest are left out, and what lasts is shown anew.
    const LogCapture log;
    for (int column = 0; column < 16; ++column)
        for (int row = 0; row < 2; ++row)
            for (int length = 4; length > 1; --length)
                remote.showText(row, column, juce::String::repeatedString("x", length), true);
    EXPECT_EQ(sent().size(), 32u);
    refresh();
    sent();
    EXPECT_EQ(log.count("the remote is there, 64 commands were not sent"), 1);
}

TEST_F(TLX70DevTest, TheTransmitterIsOnForEachWriteAndTheBrightnessIsRepeated)
{
    using Operation = LinesDouble::Operation;
    start();
    EXPECT_EQ(SerialPortDouble::getBaudRate(portName), 57600);
    std::vector<LinesDouble::PinCall> expected { { remoteTransmitLine, Operation::function, 32 },
                                                 { remoteTransmitLine, Operation::write, 0 } };
    EXPECT_EQ(pinCalls(), expected);
    expected = { { remoteTransmitLine, Operation::function, 32 },
                 { remoteTransmitLine, Operation::write, 1 },
                 { remoteTransmitLine, Operation::function, 32 },
                 { remoteTransmitLine, Operation::write, 0 } };
    EXPECT_TRUE(remote.writeBytes(clearCommand.data(), 2));
    EXPECT_EQ(pinCalls(), expected);
    EXPECT_FALSE(remote.writeBytes(nullptr, 2));
    EXPECT_FALSE(remote.writeBytes(clearCommand.data(), 0));
    remote.setDimmer(16);
    EXPECT_TRUE(pinCalls().empty());
    sent();
    EXPECT_EQ(remote.getTimerInterval(TLX70Dev::refreshTimer), 2000);
    for (int tick = 0; tick < 7; ++tick)
    {
        refresh();
        EXPECT_EQ(sent(), (Commands { brightness, { 0x8A, 0xCF }, { 0x8A, 0xDF } })) << tick;
    }
    remote.setDimmer(4);
    remote.setDimmer(-1);
    const Commands dimmed { { 0x8A, 0xC4 }, { 0x8A, 0xD4 } };
    EXPECT_EQ(sent(), dimmed);
    refresh();
    EXPECT_EQ(sent(), dimmed);
    pinCalls();
    SerialPortDouble::limitWrites(portName, 1);
    EXPECT_TRUE(remote.writeBytes(clearCommand.data(), 2)) << "taken to be sent";
    EXPECT_EQ(pinCalls(), expected);
}

/** A source shows its two lines; volume and mute come and go over them. */
TEST_F(TLX70DevTest, TheStoredLinesComeBackAfterATemporaryText)
{
    start();
    const Commands lines { clearCommand, textAt(0xE2, "Radio"), textAt(0xF0, "98.5") };
    EXPECT_TRUE(remote.restore());
    EXPECT_EQ(sent(), Commands { clearCommand }) << "nothing stored, nothing shown";
    remote.showText(0, 2, "Radio", false);
    remote.showText(1, 0, "98.5", false);
    remote.showText(1, 11, " Mute", true);
    remote.showText(0, 32, "refused", false);
    remote.restoreAfter(60000);
    EXPECT_TRUE(remote.isRestorePending());
    sent();
    remote.timerCallback(TLX70Dev::restoreTimer);
    EXPECT_EQ(sent(), lines);
    EXPECT_FALSE(remote.isRestorePending());

    remote.restoreAfter(60000);
    remote.restoreAfter(0);
    EXPECT_FALSE(remote.isRestorePending());
    remote.restoreAfter(60000);
    remote.showText(1, 0, "98.5", false);
    EXPECT_FALSE(remote.isRestorePending()) << "a stored text takes the place of the temporary one";

    // A text that wraps takes both lines; what lasts is shown over them.
    remote.showText(7, 12, "Wraps around", false);
    EXPECT_TRUE(remote.showLasting(1, 11, " Mute"));
    remote.showText(0, 0, "Favorites", true);
    sent();
    EXPECT_TRUE(remote.restore());
    EXPECT_EQ(sent(),
              (Commands { clearCommand, textAt(0xEC, "Wrap"), textAt(0xF0, "s around"), textAt(0xFB, " Mute") }));
    remote.showLasting(1, 11, {});

    remote.clearDisplay(true);
    remote.showText(1, 0, "Second", false);
    sent();
    EXPECT_TRUE(remote.restore());
    EXPECT_EQ(sent(), (Commands { clearCommand, textAt(0xF0, "Second") })) << "the wrapping line is forgotten";
}

/** The unit starts without its remote, which is plugged in while a volume is to be shown. */
TEST_F(TLX70DevTest, ARemoteThatComesLateShowsTheStoredLines)
{
    const LogCapture log;
    SerialPortDouble::failOpen(portName, true);
    start();
    pinCalls();
    EXPECT_FALSE(remote.showText(0, 0, "Radio", false));
    EXPECT_FALSE(remote.restore());
    for (int tick = 0; tick < 3; ++tick)
        refresh();
    EXPECT_TRUE(pinCalls().empty()) << "nobody is there to transmit to";
    EXPECT_EQ(log.count("the remote takes no commands"), 1);

    SerialPortDouble::failOpen(portName, false);
    remote.restoreAfter(60000);
    refresh();
    const Commands levels { brightness, { 0x8A, 0xCF }, { 0x8A, 0xDF } };
    EXPECT_EQ(sent(), levels) << "the temporary text is left to its end";
    remote.restoreAfter(0);
    refresh();
    auto expected = levels;
    expected.push_back(clearCommand);
    expected.push_back(textAt(0xE0, "Radio"));
    EXPECT_EQ(sent(), expected);
    EXPECT_EQ(log.count("the remote is there, 9 commands were not sent"), 1);
    refresh();
    EXPECT_EQ(sent(), levels) << "once";

    // Pulled out and put back while there was nothing to send.
    SerialPortDouble::failOpen(portName, true);
    SerialPortDouble::failOpen(portName, false);
    refresh();
    EXPECT_EQ(sent(), expected) << "what it showed was lost with the power";
}

TEST_F(TLX70DevTest, AfterTheStopNothingIsWrittenOrRepeated)
{
    const LogCapture log;
    start();
    remote.onStop();
    EXPECT_FALSE(SerialPortDouble::isOpen(portName));
    EXPECT_FALSE(remote.isTimerRunning(TLX70Dev::refreshTimer));
    EXPECT_FALSE(remote.showText(0, 0, "late", false));
    remote.onRelease();
    EXPECT_FALSE(remote.restore());
    EXPECT_EQ(log.count("the remote takes no commands"), 0) << "no fault";
}

/** Volume, a source's texts, the end of a temporary text and the refresh meet on a running remote. */
TEST_F(TLX70DevTest, CallsFromSeveralThreadsEndAsTheLastOfThemWanted)
{
    start();
    Kernel::DeviceWorker::startAll();
    const auto repeat = [](auto call)
    {
        return std::thread(
            [call]
            {
                for (int round = 0; round < 6; ++round)
                    call();
            });
    };
    std::thread threads[] {
        repeat([this] { remote.restore(); }),
        repeat([this] { remote.restoreAfter(60000), remote.showText(7, 10, "Volume 12", true); }),
        repeat([this] { remote.setDimmer(15); }),
        repeat([this] { remote.timerCallback(TLX70Dev::restoreTimer); }),
        repeat([this] { remote.isRestorePending(), refresh(); }),
    };
    for (auto& thread : threads)
        thread.join();
    remote.showText(0, 0, "Radio", false);
    remote.showText(1, 0, "98.5", false);
    remote.restore();
    const Commands last { clearCommand, textAt(0xE0, "Radio"), textAt(0xF0, "98.5") };
    EXPECT_TRUE(eventually(
        [&]
        {
            const std::lock_guard guard(commandsLock);
            return commands.size() >= last.size() && std::equal(last.rbegin(), last.rend(), commands.rbegin());
        }));
    Kernel::DeviceWorker::stopAll();
}
