#include "bench/unit/Unit.h"
#include "support/StoreLock.h"

#include <csignal>
#include <thread>

using namespace std::chrono_literals;

namespace
{

constexpr auto patience = 60s; // only bounds a hang
constexpr int pgnFromNetwork = 11;

/** A display on the boat's network sets the volume; true when the unit reports it. */
bool setVolume(Bench::Unit& unit, int percent)
{
    const auto from = unit.journal.end();
    unit.mcu->send({ pgnFromNetwork,
                     { 0x00, 0xED, 0x01, 0x00, 0x23, 0x02, 0x01, 0x16, 0xFE, 0x01, 0xF8, 2, 1, 1, 2,
                       static_cast<std::uint8_t>(percent) } });
    const auto report = ("16 fe 01 00 ff 02 01 " + juce::String::toHexString(percent)).toStdString();
    return unit.journal
        .waitFor(from, Bench::Clock::now() + patience,
                 [&report](const Bench::Event& event)
                 { return event.stream == "frame EVENT_PGN_SEND_CAN" && event.text.starts_with(report); })
        .has_value();
}

juce::String storedVolume(const Bench::Unit& unit)
{
    return juce::File(unit.folder() + "/system/VX_Volume.ini")
        .loadFileAsString()
        .fromFirstOccurrenceOf("Src = ", false, false)
        .upToFirstOccurrenceOf("\n", false, false);
}

} // namespace

/**
    Somebody turns the volume and switches the unit off, which is asked thirty times to end, also while it ends; and
    once more with another process inside a write to the settings store, which was there before the start.
*/
TEST(EngineShutdown, ManyRequestsInARowEndItCleanlyWithTheLastVolumeStored)
{
    auto options = Bench::Unit::Options::besideThisProgram();
    options.display = Bench::Display::none;
    Bench::Unit unit(options);
    ASSERT_EQ(unit.start(), "");
    std::unique_ptr<StoreLock> holder;
    for (const int percent : { 42, 36 })
    {
        const auto from = unit.journal.end();
        ASSERT_EQ(unit.startEngine(), "");
        // A volume has an effect once there is something to hear.
        for (const auto& ready : { Bench::isEvent("settled", "mbFM"), Bench::isEvent("dsp", "source tuner") })
            ASSERT_TRUE(unit.journal.waitFor(from, Bench::Clock::now() + patience, ready).has_value());
        ASSERT_TRUE(setVolume(unit, percent));
        const auto asked = Bench::Clock::now();
        for (int request = 0; request < 30 && unit.engine().isRunning(); ++request)
        {
            kill(unit.engine().pid(), SIGTERM);
            std::this_thread::sleep_for(20ms);
        }
        EXPECT_TRUE(unit.journal.waitForLatest("engine", "exit 0", asked + patience));
        EXPECT_EQ(storedVolume(unit), juce::String(percent / 2));
        if (holder == nullptr)
            holder = std::make_unique<StoreLock>(juce::File(unit.folder() + "/system/settings"));
    }
    unit.stop();
}
