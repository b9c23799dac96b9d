#include "bench/mcu/TestEquipment.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace Bench
{

namespace
{

constexpr std::uint8_t fromUnit[] = { 0xAA, 0xEE };
constexpr std::uint8_t fromEquipment[] = { 0xFF, 0xAA };
constexpr std::size_t sequenceAt = 2;
constexpr std::size_t lengthAt = 3;
constexpr std::size_t contentAt = 4;

std::uint8_t sumOf(std::span<const std::uint8_t> bytes)
{
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

/** What the unit stored may be anything; what the console shows is one line. */
std::string printable(std::span<const std::uint8_t> bytes)
{
    constexpr std::uint8_t blank = 0x20, del = 0x7F;
    std::string text(bytes.begin(), bytes.end());
    std::ranges::replace_if(
        text, [](char c) { return static_cast<std::uint8_t>(c) < blank || static_cast<std::uint8_t>(c) == del; }, '?');
    return text;
}

std::string statesText(int bits)
{
    return std::string("states") + ((bits & 1) != 0 ? " trigger" : "") + ((bits & 2) != 0 ? " spare" : "") +
           ((bits & 3) == 0 ? " none" : "");
}

} // namespace

std::optional<UnitTestFrame> parseUnitFrame(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() <= TestEquipment::frameOverhead || !std::ranges::equal(bytes.first(sequenceAt), fromUnit) ||
        bytes[lengthAt] != bytes.size() || bytes.back() != sumOf(bytes.first(bytes.size() - 1)))
        return {};
    return UnitTestFrame { bytes[sequenceAt], Bytes(bytes.begin() + contentAt, bytes.end() - 1) };
}

std::string testMessageText(std::span<const std::uint8_t> message)
{
    const auto begins = [&](std::initializer_list<std::uint8_t> with, std::size_t size)
    { return message.size() == size && std::equal(with.begin(), with.end(), message.begin()); };
    const auto number = [&](std::size_t at) { return std::to_string(message[at]); };

    if (begins({ 0x82, 0x00 }, 2))
        return "left";
    if (begins({ 0x82, 0x01 }, 2))
        return "entered";
    if (begins({ 0x82, 0x02 }, 2))
        return "ready";
    if (begins({ 0x00, 0x00 }, 5) && message[4] <= 1)
        return "key " + number(2) + (message[4] == 1 ? " done" : " refused");
    if (begins({ 0x00, 0x01 }, 4))
        return "source " + number(2) + " " + number(3);
    if (begins({ 0x00, 0x02 }, 3))
        return statesText(message[2]);
    if (begins({ 0x00, 0x03, 0x00 }, 4))
        return "volume " + number(3);
    if (message.size() >= 3 && begins({ 0x00, 0x04 }, std::size_t { 3 } + message[2]))
        return "id " + printable(message.subspan(3));
    if (message.size() >= 2 && message[0] == 0x07)
        return "text " + number(1) + " \"" + printable(message.subspan(2)) + "\"";
    return "message " + hex(message);
}

Bytes equipmentFrame(std::uint8_t sequence, std::span<const std::uint8_t> content)
{
    Bytes frame(content.size() + TestEquipment::frameOverhead);
    std::ranges::copy(fromEquipment, frame.begin());
    frame[sequenceAt] = sequence;
    frame[lengthAt] = static_cast<std::uint8_t>(frame.size());
    std::ranges::copy(content, frame.begin() + contentAt);
    frame.back() = sumOf(std::span(frame).first(frame.size() - 1));
    return frame;
}

TestEquipment::TestEquipment(Journal& journalToUse, Mcu& mcuToUse)
    : journal(journalToUse)
    , mcu(mcuToUse)
{
    mcu.addListener(
        [this](const Mcu::Frame& frame)
        {
            if (frame.fromUnit && frame.command == Mcu::autoTest)
                hear(frame.data);
        });
}

void TestEquipment::setDeviceId(const std::string& text)
{
    const auto size = std::min(text.size(), longestId);
    Bytes content { 0x00, 0x04, static_cast<std::uint8_t>(size) };
    content.insert(content.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size));
    send(std::move(content));
}

void TestEquipment::hold(bool on)
{
    current.held = on;
    if (!on && current.unacknowledged)
        transmitAcknowledgement(false);
}

void TestEquipment::hear(const Bytes& bytes)
{
    const auto frame = parseUnitFrame(bytes);
    if (!frame)
    {
        ++current.damaged;
        journal.add("autotest", "damaged");
        return;
    }
    ++current.received;
    current.unacknowledged = true;
    journal.add("autotest", testMessageText(frame->message));
    if (!current.held)
        transmitAcknowledgement(false);
}

void TestEquipment::transmitAcknowledgement(bool damaged)
{
    current.unacknowledged = damaged && current.unacknowledged; // the unit drops a damaged frame
    transmit({ 0x83, 0xFF }, damaged);
}

void TestEquipment::transmit(Bytes content, bool damaged)
{
    content.resize(std::min(content.size(), longestContent));
    auto frame = equipmentFrame(++sequence, content);
    if (damaged)
        frame.back() ^= 0xFF;
    ++current.sent;
    mcu.send({ Mcu::autoTest, std::move(frame) });
}

bool TestEquipment::takeDamage()
{
    if (current.toDamage <= 0)
        return false;
    --current.toDamage;
    return true;
}

} // namespace Bench
