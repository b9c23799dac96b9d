#include "bench/console/Script.h"
#include "bench/mcu/McuDevice.h"
#include "bench/network/NetworkDisplay.h"
#include "bench/network/NetworkLog.h"

#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <filesystem>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;
using testing::HasSubstr;

NetworkMessage fromUnit(int pgn, Bytes data)
{
    return { pgn, 6, unitAddress, everybody, std::move(data) };
}

struct Told
{
    int pgn;
    const char* bytes;
    const char* text;
};

const Told told[] = {
    { 130582, "02 28 f3", "zone 2 volume 40 %" },
    { 130582, "01 00 f7", "zone 1 volume 0 %, muted" },
    { 130582, "02 28 03 00 00", "zone 2 volume 40 %" },
    { 130581, "01 64 fd 00 06 00 00 00 01 00 00 00 00 00 00 00 00 00",
      "zone 1 configuration: fader -3, balance 0, subwoofer 6, treble 0, middle 0, bass 0, preset 1, high-pass off" },
    { 130586, "02 5a 00 06 0c fa 01 02 0a 01 78 00 00 00 00 00 00 00",
      "zone 2 parameters: fader 0, balance 6, subwoofer 12, treble -6, middle 1, bass 2, preset 4, high-pass 120 Hz, "
      "highest volume 90 %" },
    { 130574, "01 02 02 01 08 01 5a 6f 6e 65 20 31 02 06 01 44 65 63 6b", "zones: 1 'Zone 1', 2 'Deck'" },
    { 126208, "02 1a fe 01 00 03 00 f0", "acknowledged 130586: all done" },
    { 126208, "02 1a fe 01 00 03 30 f5", "refused 130586: field 2 of 3 out of range, field 3 of 3 not supported" },
    { 126208, "00 0e fe 01 ff ff ff ff ff ff 01 01 01", "asks for 130574: first zone 1" },
    { 126208, "01 1a fe 01 f8 02 01 01 03 fd", "commands 130586: zone 1, fader -3" },
    { 126208, "01 16 fe 01 f8 02 01 00 03 01", "commands 130582: zone 0, step down" },
    { 59904, "15 fe 01", "asks for 130581" },
    { 65280, "c0 9a 05 00 ff ff ff ff", "starts an update, number 5" },
    { 60928, "01 00 a0 ff 00 82 fa 40", "claims an address: class 125, function 130, maker 2045, number 1" },
};

Bytes bytesOf(const std::string& text)
{
    return parseBytes(parseLine(text).words).bytes;
}

TEST(NetworkText, saysWhatEachMessageMeans)
{
    for (const auto& [pgn, bytes, text] : told)
    {
        const auto data = bytesOf(bytes);
        EXPECT_EQ(networkText(fromUnit(pgn, data)), text);
        // Of a cut message nothing is made up. What is whole without its last bytes: the shorter form of a zone's
        // configuration, and a message that is shown as bytes.
        for (std::size_t size = 0; size < data.size() && pgn != Pgn::proprietary; size += size == 16 ? 2 : 1)
            EXPECT_THAT(networkText(fromUnit(pgn, { data.begin(), data.begin() + static_cast<long>(size) })),
                        HasSubstr(", cut short"));
    }
    EXPECT_EQ(
        networkText(fromUnit(130574, bytesOf("ff 00 02 01 06 01 5a 6f 6e 65 20 31 02 06 01 43 6f 63 6b 70 69 74"))),
        "zones: 1 'Zone 1', 2 'Cockpit'");
    EXPECT_EQ(networkText(fromUnit(130570, { 1, 0xFF })), "PGN 130570: 01 ff");
    EXPECT_EQ(networkText(Mcu::Frame { true, 7, { 0x1E, 0x80, 0, 'N', 'o', 0 } }), "update refused: No");
    EXPECT_EQ(networkText(Mcu::Frame { true, 10, { 3, '1', '.', '2' } }), "version 3: 1.2");
    EXPECT_EQ(networkText(Mcu::Frame { false, 11, { 0x15, 0xFE } }), "parcel, cut short: 15 fe");
}

class NetworkDevice : public McuDevice
{
protected:
    NetworkNode node { mcu };
    NetworkDisplay display { journal, mcu, node };
    Loop loop;
    NetworkLog log { journal, mcu, node, loop };
    const std::string file = testing::TempDir() + "network-" + std::to_string(::getpid()) + ".log";
    std::uint8_t sequence = 0;

    void TearDown() override { std::filesystem::remove(file); }

    void tell(int command, const Bytes& bytes)
    {
        put({ ++sequence, static_cast<std::uint16_t>(command), bytes });
        EXPECT_EQ(get(), McuFrame::ack(sequence));
    }

    /** What the unit gets next, without the head of a message of the display. */
    Bytes heard(int address = displayAddress)
    {
        const auto frame = getAndAcknowledge();
        EXPECT_EQ(frame.command, 11);
        EXPECT_GE(frame.data.size(), 6u);
        EXPECT_EQ(Bytes(frame.data.begin() + 3, frame.data.begin() + 6),
                  (Bytes { 0, static_cast<std::uint8_t>(address), 2 }));
        return { frame.data.begin() + 6, frame.data.end() };
    }
};

TEST_F(NetworkDevice, asksAndCommandsInTheBytesOfTheBus)
{
    const std::pair<void (*)(NetworkDisplay&), const char*> cases[] = {
        { [](auto& mfd) { mfd.requestZones(); }, "00 0e fe 01 ff ff ff ff ff ff 01 01 01" },
        { [](auto& mfd) { mfd.isoRequest(Pgn::zoneVolume); }, "16 fe 01" },
        { [](auto& mfd) { mfd.setVolume(2, 40); }, "01 16 fe 01 f8 02 01 02 02 28" },
        { [](auto& mfd) { mfd.stepVolume(0, false); }, "01 16 fe 01 f8 02 01 00 03 01" },
        { [](auto& mfd) { mfd.setTone(1, toneFields[0], -3); }, "01 1a fe 01 f8 02 01 01 03 fd" },
    };
    for (const auto& [act, bytes] : cases)
    {
        act(display);
        EXPECT_EQ(heard(), bytesOf(bytes));
    }
    EXPECT_TRUE(sees("mfd sent", "commands 130586: zone 1, fader -3"));
}

TEST_F(NetworkDevice, knowsWhatTheUnitHasTold)
{
    tell(11, { 0x16, 0xFE, 1, 0, 255, 2, 2, 40, 0xF7 });
    tell(11, { 0x16, 0xFE, 1, 0, 35, 2, 2, 42, 3, 0, 0 }); // says nothing of mute
    tell(11, { 0x00, 0xED, 1, 0, 50, 2, 2, 0x1A, 0xFE, 1, 0, 1, 0xF3 });
    EXPECT_TRUE(sees("mfd", "refused 130586: field 1 of 1 out of range"));
    const auto state = display.state();
    EXPECT_EQ(state.received, 3u);
    EXPECT_EQ(state.zones.at(2).volume, 42);
    EXPECT_EQ(state.zones.at(2).muted, true);
    EXPECT_EQ(state.lastAnswer, "") << "the answer was for another";
}

// What belongs to the address is the microcontroller's to answer, to whom it is asked for; the unit hears of it.
TEST_F(NetworkDevice, theMicrocontrollerSaysWhatItIs)
{
    std::vector<NetworkMessage> said;
    node.addListener(
        [&](const NetworkMessage& message)
        {
            if (message.source == unitAddress)
                said.push_back(message);
        });
    const auto answersTo = [&](int pgn)
    {
        said.clear();
        display.isoRequest(pgn);
        EXPECT_EQ(heard().size(), 3u);
        return said;
    };
    const NetworkMessage claim { 60928, 6, unitAddress, everybody, bytesOf("01 00 a0 ff 00 82 fa 40") };
    tell(Mcu::lastMemory, {});
    EXPECT_EQ(said, std::vector { claim }) << "at power-on";
    for (auto frame = get(); frame.command != 0xFFFF; frame = get())
        put(McuFrame::ack(frame.sequence));
    EXPECT_EQ(answersTo(Pgn::addressClaim), std::vector { claim });

    const auto product = answersTo(Pgn::productInformation);
    ASSERT_EQ(product.size(), 1u);
    EXPECT_EQ(product[0].destination, everybody);
    EXPECT_EQ(product[0].data.size(), 134u);
    EXPECT_TRUE(sees("mfd", "product 'Marine audio head unit', software 'simulated', version '1', number '000001'"));

    const auto lists = answersTo(Pgn::pgnList);
    ASSERT_EQ(lists.size(), 2u);
    EXPECT_EQ(lists[0].destination, displayAddress);
    EXPECT_TRUE(sees("mfd", "takes 59904 65280 126208 130850"));
    EXPECT_TRUE(answersTo(Pgn::zones).empty()) << "the unit's to answer";

    said.clear();
    mcu.reset();
    EXPECT_EQ(said, std::vector { claim });
}

// Nothing goes out of a file with one bad line; of a good one everything, one at a time and in order, except what is
// not for the unit.
TEST_F(NetworkDevice, playsAFileWholly)
{
    const std::string good = "# a night at anchor\n"
                             "2026-11-25T12:00:00.000Z,6,59904,50,255,3,16,fe,01\n"
                             "2026-11-25T12:00:00.000Z,6,130582,10,255,3,01,50,f3\n"
                             "2026-11-25T12:00:00.200Z,6,59904,50,10,3,15,fe,01\n";
    std::ofstream(file) << good << "2026-11-25T12:00:00.300Z,6,59904,50,10,4,15,fe,01\n";
    EXPECT_THAT(log.play(file, {}), HasSubstr(":5: length 4"));
    EXPECT_EQ(get().command, 0xFFFF);

    for (const std::optional<double> speed : { std::optional<double>(), std::optional(2.0) })
    {
        std::ofstream(file) << good;
        EXPECT_EQ(log.play(file, speed), "");
        EXPECT_EQ(heard(50), (Bytes { 0x16, 0xFE, 1 }));
        if (speed)
        {
            pass(99ms);
            EXPECT_EQ(get().command, 0xFFFF);
            pass(1ms);
        }
        EXPECT_EQ(heard(50), (Bytes { 0x15, 0xFE, 1 }));
        EXPECT_EQ(journal.find({}, 1, isIn("n2k")).front().text, "played 2 messages of " + file + ", 1 skipped");
    }

    // A log of frames begins and ends somewhere.
    std::ofstream(file) << "(1764072000.000000) can0 0DED0A32#2102020102FFFFFF\n"
                           "(1764072000.000000) can0 0DED0A32#400A0116FE01F802\n"
                           "(1764072000.000000) can0 0DED0A32#410102020AFFFFFF\n"
                           "(1764072000.000000) can0 0DED0A32#600A0116FE01F802\n";
    EXPECT_EQ(log.play(file, {}), "");
    EXPECT_EQ(heard(50), bytesOf("01 16 fe 01 f8 02 01 02 02 0a"));
    EXPECT_TRUE(sees("n2k", "played 1 messages of " + file + ", 2 skipped"));
}

TEST_F(NetworkDevice, servesAndTakesLines)
{
    ASSERT_EQ(log.logTo(file), "");
    ASSERT_EQ(log.serve(0, LineForm::raw), "");
    ASSERT_EQ(log.serve(log.state().port, LineForm::candump), "");
    asio::io_context context;
    asio::ip::tcp::socket peer(context);
    // A port that is another's leaves everything as it was.
    const asio::ip::tcp::acceptor taken(context, { asio::ip::address_v4::loopback(), 0 });
    EXPECT_NE(log.serve(taken.local_endpoint().port(), LineForm::raw), "");
    const auto lines = [&] { return log.state().fed + log.state().skipped + log.state().refused; };
    peer.connect({ asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(log.state().port) });
    asio::write(peer, asio::buffer(std::string("nonsense,\n"
                                               "2026-11-25T12:00:00Z,6,59904,10,255,3,16,fe,01\n"
                                               "2026-11-25T12:00:00Z,6,59904,50,255,3,16,fe,01\n"
                                               "12:00:00.000 R 18EA0A33 16 FE 01\r\n")));
    while (lines() < 4)
        loop.context().run_one_for(60s);
    EXPECT_EQ(heard(50), (Bytes { 0x16, 0xFE, 1 }));
    EXPECT_EQ(heard(51), (Bytes { 0x16, 0xFE, 1 }));
    EXPECT_TRUE(sees("n2k", "a reader's line is refused: no time such as 2026-11-25T12:00:00.123Z"));
    // The address of a display says whom the unit means; on the bus this message is everybody's.
    tell(11, { 0x16, 0xFE, 1, 0, 35, 2, 1, 80, 0xF3 });
    tell(11, { 0x00, 0xED, 1, 0, 35, 2, 2, 0x16, 0xFE, 1, 0, 2, 0 });
    loop.context().poll();
    std::string received;
    for (const auto* ending : { "# refused: no time such as 2026-11-25T12:00:00.123Z\n", " can0 18EAFF32#16FE01\n",
                                " can0 18EA0A33#16FE01\n", " can0 19FE160A#0150F3\n",
                                " can0 0DED230A#60070216FE010002\n", " can0 0DED230A#6100FFFFFFFFFFFF\n" })
    {
        const auto size = asio::read_until(peer, asio::dynamic_buffer(received), '\n');
        EXPECT_TRUE(received.substr(0, size).ends_with(ending)) << received;
        received.erase(0, size);
    }
    EXPECT_EQ(lines(), 4u);
    std::ifstream written(file);
    const std::string all { std::istreambuf_iterator(written), {} };
    for (const auto* each : { "Z,6,59904,50,255,3,16,fe,01\n", "Z,6,59904,51,10,3,16,fe,01\n",
                              "Z,6,130582,10,255,3,01,50,f3\n", "Z,3,126208,10,35,7,02,16,fe,01,00,02,00\n" })
        EXPECT_THAT(all, HasSubstr(each));

    // A log that cannot begin leaves the one before as it is, and one that begins again keeps what is there.
    EXPECT_THAT(log.logTo("/nowhere/log"), HasSubstr("No such file"));
    EXPECT_EQ(log.state().file, file);
    ASSERT_EQ(log.logTo(file), "");
    tell(11, { 0x16, 0xFE, 1, 0, 255, 2, 1, 80, 0xF3 });
    std::ifstream again(file);
    const std::string more { std::istreambuf_iterator(again), {} };
    EXPECT_TRUE(more.starts_with(all) && more.size() > all.size()) << more;
}

} // namespace
