#include "bench/dsp/Dsp.h"

#include "bench/buses/WireValues.h"

#include <algorithm>

namespace Bench
{

namespace
{

constexpr std::uint32_t configureCode = 0x1B0004;
constexpr std::uint32_t writeCode = 0x1B000C;
constexpr std::uint32_t readCode = 0x1B0010;
constexpr std::uint32_t selectCode = 0x1B0024;
constexpr std::array<std::uint32_t, 10> driverRecord { 1000000, 8, 10, 100, 0, 0, 1, 1, 1, 0 };
constexpr std::uint8_t readCrcCommand[] = { 0x00, 0x00, 0x72 };
constexpr std::size_t maxPrefix = 4;
constexpr std::int32_t done = 0;
constexpr std::int32_t failed = -1;

std::uint32_t codeOf(PacketLine::Packet request)
{
    return request.size() >= sizeof(std::uint32_t) ? valueAt<std::uint32_t>(request, 0) : 0;
}

bool isTransfer(std::uint32_t code)
{
    return code == writeCode || code == readCode;
}

} // namespace

Dsp::Dsp(Journal& journalToUse, PacketLine& lineToUse)
    : BusDevice(journalToUse, lineToUse)
    , chip([this](const char* stream, const std::string& text) { journal.add(stream, text); })
{
}

std::string Dsp::start()
{
    started = true;
    return openRefused ? "" : line.open();
}

void Dsp::closed(int connection)
{
    if (selected == connection)
        selected = 0;
    // The bytes of a block that was never released reach no one.
    if (const auto session = sessions.extract(connection); session && !session.mapped().block.empty())
        journal.add("dsp", "a block was cut off");
}

bool Dsp::canBeSlow(Packet request) const
{
    return !gone && isTransfer(codeOf(request));
}

std::optional<Bytes> Dsp::answer(int connection, Packet request)
{
    if (gone)
        return {};
    const auto code = codeOf(request);
    const auto input = request.subspan(std::min(request.size(), sizeof(std::uint32_t)));
    auto& session = sessions[connection];
    bool taken = false;
    std::optional<Bytes> bytes;
    const bool fails = code == writeCode && transfersToFail > 0 && transfersToFail-- > 0;
    const bool hasPrefix = !input.empty() && input[0] <= maxPrefix && input.size() > input[0];
    if (code == configureCode)
        taken = configure(input);
    else if (code == selectCode)
        taken = select(connection, input);
    else if (isTransfer(code) && !fails && hasPrefix && selected == connection)
    {
        const auto prefix = input.subspan(1, input[0]);
        const auto rest = input.subspan(1 + prefix.size());
        if (code == writeCode && prefix.empty())
            taken = write(session, rest);
        else if (code == readCode && rest.size() == sizeof(std::uint32_t))
            taken = (bytes = read(session, prefix, valueAt<std::uint32_t>(rest, 0))).has_value();
    }
    refused += taken ? 0 : 1;
    Bytes reply;
    appendValue(reply, taken ? done : failed);
    if (bytes)
        reply.insert(reply.end(), bytes->begin(), bytes->end());
    return reply;
}

bool Dsp::configure(Packet record) const
{
    if (configureFails)
        return false;
    Bytes expected;
    for (const auto value : driverRecord)
        appendValue(expected, value);
    const bool known = std::ranges::equal(record, expected);
    if (!known)
        journal.add("dsp", "configuration refused: " + hex(record.first(std::min(record.size(), expected.size()))));
    return known;
}

bool Dsp::select(int connection, Packet value)
{
    constexpr std::uint32_t low = 0, high = 1;
    if (value.size() != sizeof(std::uint32_t) || valueAt<std::uint32_t>(value, 0) > high)
        return false;
    auto& session = sessions[connection];
    if (valueAt<std::uint32_t>(value, 0) == low)
    {
        if (selected != 0 && selected != connection)
        {
            journal.add("dsp", "selected by two at once");
            return false;
        }
        if (selected == 0)
            session = {};
        selected = connection;
        return true;
    }
    if (selected == connection)
    {
        selected = 0;
        endBlock(session);
    }
    return true;
}

bool Dsp::write(Session& session, Packet data)
{
    if (data.empty() || data.size() > maxTransfer)
        return false;
    session.overflow = session.overflow || session.block.size() + data.size() > maxBlock;
    if (!session.overflow)
        session.block.insert(session.block.end(), data.begin(), data.end());
    return !session.overflow;
}

std::optional<Bytes> Dsp::read(Session& session, Packet prefix, std::size_t length)
{
    if (length == 0 || length > maxTransfer)
        return {};
    if (!prefix.empty())
    {
        session.answer.clear();
        if (!std::ranges::equal(prefix, readCrcCommand))
        {
            journal.add("dsp", "unknown read: " + hex(prefix));
            return {};
        }
        auto value = chip.readCrc(crc == Crc::right);
        if (crc != Crc::right)
            value ^= 0xFFFF;
        if (crc == Crc::wrongOnce)
            crc = Crc::right;
        session.answer = { static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value & 0xFF) };
    }
    // Behind the answer the line carries zeros.
    Bytes bytes(length, 0);
    const auto count = std::min(length, session.answer.size());
    std::copy_n(session.answer.begin(), count, bytes.begin());
    session.answer.erase(session.answer.begin(), session.answer.begin() + static_cast<std::ptrdiff_t>(count));
    return bytes;
}

void Dsp::endBlock(Session& session)
{
    if (session.overflow)
        journal.add("dsp", "a block of more than " + std::to_string(maxBlock) + " bytes is left out");
    else if (!session.block.empty())
        chip.block(session.block);
    session = {};
}

Dsp::State Dsp::state() const
{
    return { chip.memory(), chip.counters(), chip.images(), chip.isAwake(), refused, activeFaults() };
}

std::vector<std::string> Dsp::activeFaults() const
{
    std::vector<std::string> faults;
    const auto add = [&](bool holds, const std::string& fault)
    {
        if (holds)
            faults.push_back(fault);
    };
    add(openRefused, "cannot be opened");
    add(configureFails, "cannot be configured");
    add(transfersToFail > 0, transfersToFail == 1
                                 ? "the next transfer will fail"
                                 : "the next " + std::to_string(transfersToFail) + " transfers will fail");
    add(crc != Crc::right, crc == Crc::wrongOnce ? "the next CRC will be wrong" : "every CRC is wrong");
    add(delay.count() > 0, "each transfer takes " + std::to_string(delay.count()) + " ms longer");
    add(gone, "gone");
    return faults;
}

std::string Dsp::refuseOpen(bool refuse)
{
    if (openRefused == refuse)
        return {};
    openRefused = refuse;
    if (!started) // holds when it is
        return {};
    if (!refuse)
        return line.open();
    line.close();
    forgetRequests();
    sessions.clear();
    selected = 0;
    return {};
}

std::string Dsp::clearFaults()
{
    failConfigure(false);
    failTransfers(0);
    answerCrc(Crc::right);
    slowBy(std::chrono::milliseconds(0));
    setGone(false);
    return refuseOpen(false);
}

} // namespace Bench
