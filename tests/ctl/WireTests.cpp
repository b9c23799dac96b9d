#include "support/TestBus.h"

#include "diagnostics/Wire.h"

#include <gmock/gmock.h>

namespace
{

using Json = Diagnostics::Json;
namespace Wire = Diagnostics::Wire;

class WireTest : public testing::Test
{
protected:
    Platform::SdBusMessage newMessage()
    {
        sd_bus_message* raw = nullptr;
        BusPeer::check(sd_bus_message_new_signal(peer.get(), &raw, "/x", "com.corvane.Test", "Test"));
        return Platform::SdBusMessage(raw);
    }
    static void close(const Platform::SdBusMessage& message)
    {
        BusPeer::check(sd_bus_message_seal(message.get(), 1, 0));
        BusPeer::check(sd_bus_message_rewind(message.get(), 1));
    }
    /** What the other side reads. */
    Json sent(const Json& value)
    {
        const auto message = newMessage();
        BusPeer::check(Wire::append(message.get(), value));
        close(message);
        return Wire::read(message.get());
    }

    TestBus bus;
    BusPeer peer { bus };
};

} // namespace

TEST_F(WireTest, CarriesWhatAnAnswerMayHold)
{
    const Json cases[] = {
        Json::object(),
        { { "b", true }, { "x", -5'000'000'000 }, { "d", 0.5 }, { "s", "Größe \"quoted\"\n" }, { "empty", "" } },
        { { "texts", { "one", "two" } }, { "numbers", { 1, 2, 3 } }, { "none", Json::array() } },
        { { "record", { { "inner", { { "deep", "x" } } } } }, { "records", { { { "a", 1 } }, Json::object() } } },
        Json::array({ { { "page", "mbFM" } }, { { "page", "mbEQ" }, { "show", 1 } } }),
    };
    for (const auto& value : cases)
        EXPECT_EQ(sent(value).dump(), value.dump()) << "keys keep their order, too";
    EXPECT_EQ(sent({ { "a", nullptr }, { "b", 1 } }), Json({ { "b", 1 } })) << "null is left out";
    const auto message = newMessage();
    BusPeer::check(Wire::append(message.get(), Json::array(), "a{sv}"));
    EXPECT_STREQ(sd_bus_message_get_signature(message.get(), 1), Wire::recordsType) << "of none, too";
}

/** Whatever comes is read or refused, and text that the bus does not take cannot end the connection. */
TEST_F(WireTest, RefusesWhatItCannotCarry)
{
    for (const Json& value : { Json({ { "broken", "\xff\xfe" } }), Json({ { "mixed", { 1, "two" } } }),
                               Json({ { "lists", { { 1 }, { 2 } } } }) })
        EXPECT_LT(Wire::append(newMessage().get(), value), 0) << value.size();
}

TEST_F(WireTest, ReadsHostileMessages)
{
    const auto reading = [&](auto... content)
    {
        const auto message = newMessage();
        BusPeer::check(sd_bus_message_append(message.get(), content...));
        close(message);
        return Wire::read(message.get());
    };
    EXPECT_EQ(
        reading("ybnqiuxtdsog", 1, 1, -2, 3, -4, 5, std::int64_t(-6), std::uint64_t(7), 0.5, "s", "/o", "g").size(),
        12u);
    EXPECT_EQ(reading("t", std::numeric_limits<std::uint64_t>::max()), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(reading("a{us}", 2, 7, "seven", 8, "eight"), Json({ { "7", "seven" }, { "8", "eight" } }));
    EXPECT_EQ(reading("a{sv}", 2, "same", "i", 1, "same", "i", 2), Json({ { "same", 2 } })) << "the last one counts";
    EXPECT_EQ(reading("vv", "v", "v", "s", "deep", "aay", 1, 2, 1, 2).size(), 2u);
    EXPECT_TRUE(reading("").is_null());
    EXPECT_THROW(reading("(ii)", 1, 2), std::runtime_error);
    EXPECT_THROW(reading("h", 0), std::runtime_error);
    EXPECT_THROW(reading("a{sv}", 1, "pair", "(ss)", "a", "b"), std::runtime_error);
}
