#pragma once

#include "bench/mcu/Mcu.h"

namespace Bench
{

/**
    A frame of the factory test from the unit: AA EE, sequence, length of the whole frame, message, sum of all before.
*/
struct UnitTestFrame
{
    std::uint8_t sequence = 0;
    Bytes message; ///< at least one byte
    bool operator==(const UnitTestFrame&) const = default;
};

/** Empty when the bytes are not exactly one whole, undamaged frame. */
std::optional<UnitTestFrame> parseUnitFrame(std::span<const std::uint8_t> bytes);
/** What a message of the unit says: "ready", "key 12 done", "volume 20"; one without a meaning is "message 12 34". */
std::string testMessageText(std::span<const std::uint8_t> message);
/**
    A frame of the equipment: FF AA, sequence, length of the whole frame, content (a command and its parameters), sum.
*/
Bytes equipmentFrame(std::uint8_t sequence, std::span<const std::uint8_t> content);

/**
    The factory's test equipment, which talks to the unit through the microcontroller. It acknowledges each of the
    unit's messages, so that the next one comes, and can be made to misbehave.

    Journal stream: "autotest", each message as testMessageText, and "damaged" for bytes that are no frame, which are
    not acknowledged.
*/
class TestEquipment
{
public:
    /** Both must outlive it. */
    TestEquipment(Journal& journalToUse, Mcu& mcuToUse);
    TestEquipment(const TestEquipment&) = delete;
    TestEquipment& operator=(const TestEquipment&) = delete;

    void enterTestMode() { send({ 0x82, 0x01 }); }
    void leaveTestMode() { send({ 0x82, 0x00 }); }
    /** `argument` counts for the power item, 14: 1 is off, 0 is on. */
    void pressKey(std::uint8_t item, std::uint8_t argument) { send({ 0x00, 0x00, item, argument }); }
    void requestSource(std::uint8_t type, std::uint8_t number) { send({ 0x00, 0x01, type, number }); }
    void requestDeviceStates() { send({ 0x00, 0x02 }); }
    void setVolume(std::uint8_t volume) { send({ 0x00, 0x03, 0x00, volume }); }
    /** At most `longestId` bytes. The unit takes the last six characters as its device id. */
    void setDeviceId(const std::string& text);
    void requestText(std::uint8_t item) { send({ 0x07, item }); }
    /** Any command with its parameters, at most `longestContent` bytes; the rest is cut off. */
    void send(Bytes content) { transmit(std::move(content), takeDamage()); }

    void acknowledge() { transmitAcknowledgement(takeDamage()); }
    /** Asks for the last message again. */
    void askAgain() { send({ 0x83, 0xFC }); }
    /** Held, no message is acknowledged by itself. The end of it acknowledges the one that waits. */
    void hold(bool on);
    /** The next frames have a wrong sum. Acknowledgements that go by themselves are spared. */
    void damageNext(int frames) { current.toDamage = frames; }

    struct State
    {
        bool held = false;
        int toDamage = 0;            ///< its next frames that will have a wrong sum
        bool unacknowledged = false; ///< a message has come that was not acknowledged
        unsigned received = 0, sent = 0, damaged = 0;
    };
    State state() const { return current; }

    static constexpr std::size_t frameOverhead = 5;
    static constexpr std::size_t longestContent = McuFrame::maxData - frameOverhead;
    static constexpr std::size_t longestId = longestContent - 3;

private:
    Journal& journal;
    Mcu& mcu;
    State current;
    std::uint8_t sequence = 0;

    void hear(const Bytes& bytes);
    void transmit(Bytes content, bool damaged);
    void transmitAcknowledgement(bool damaged);
    bool takeDamage();
};

} // namespace Bench
