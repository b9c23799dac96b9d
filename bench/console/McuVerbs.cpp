#include "bench/console/Verb.h"

namespace Bench
{

namespace
{

/** Something happens to the next frames, one unless told otherwise, or to the next of one kind. */
auto toFrames(void (Mcu::*fault)(Mcu::FaultyFrames))
{
    return on(
        &Unit::mcu,
        [fault](Mcu& mcu, auto& given) {
            (mcu.*fault)({ given.number(0, 1), given.has(1) ? std::optional(commandOfName(given[1])) : std::nullopt });
        });
}

std::uint8_t keyOf(const std::string& name)
{
    return static_cast<std::uint8_t>(findKey(name).value_or(0));
}

Outcome press(Console& console, const Arguments& given)
{
    console.moveFinger();
    console.unit.panel->pressKey(keyOf(given[0]), given.number(1));
    return { Outcome::acted };
}

std::string send(Mcu& mcu, const Arguments& given)
{
    const auto data = given.bytes(1);
    if (data.size() > McuFrame::maxData)
        return "a frame has at most " + std::to_string(McuFrame::maxData) + " bytes";
    mcu.send({ commandOfName(given[0]), data });
    return {};
}

} // namespace

Verbs mcuVerbs()
{
    return {
        { "mcu source SOURCE [NUMBER]", "Asks for a source; the NUMBER is that of the USB storage.",
          on(&Unit::mcu, [](Mcu& mcu, auto& given) { mcu.requestSource(given.source(0)); }) },
        { "mcu memory SOURCE [NUMBER]", "What it asks for after the unit's next start.",
          on(&Unit::mcu, [](Mcu& mcu, auto& given) { mcu.setLastMemory(given.source(0)); }) },
        { "mcu key KEY [ORIGIN]", "Presses a key of the front panel.", press },
        { "mcu hold KEY [ORIGIN] TIME", "Presses it every 100 ms and releases it at the end.",
          on(&Unit::panel,
             [](Panel& panel, auto& given) { panel.hold(keyOf(given[0]), given.number(1), given.time(2)); }) },
        { "mcu flood KEY-LIST RATE TIME", "Presses them in turn, so many a second, as far as the link keeps up.",
          on(&Unit::panel,
             [](Panel& panel, auto& given) { panel.flood(findKeys(given[0]), given.number(1), given.time(2)); }) },
        { "mcu send FRAME [BYTE...]", "Sends a frame.", on(&Unit::mcu, send) },
        { "mcu status", "Asks for the device status.", on(&Unit::mcu, &Mcu::requestDeviceStatus) },
        { "mcu power-off [kept]", "Switches the unit off: when it is ready, its power is cut, unless it is kept.",
          on(&Unit::mcu, [](Mcu& mcu, auto& given) { mcu.requestPowerOff(given.has(0)); }) },
        { "mcu power-on", "Switches it on again.", onUnit([](Unit& unit, auto&) { return unit.powerOn(); }) },
        { "factory-reset", "The keys that reset it: the setup page says so, and five seconds later its power is cut.",
          on(&Unit::panel, [](Panel& panel) { panel.pressKey(keyOf("playpause-long"), 0); }) },
        { "mcu silent TIME", "Hears and says nothing.",
          on(&Unit::mcu, [](Mcu& mcu, auto& given) { mcu.silence(given.time(0)); }) },
        { "mcu reset", "It starts anew: what was on its way is lost.", on(&Unit::mcu, &Mcu::reset) },
        { "mcu delay TIME", "Whatever it says leaves so much later.",
          on(&Unit::mcu, [](Mcu& mcu, auto& given) { mcu.delayBy(given.time(0)); }) },
        { "mcu drop [AMOUNT] [FRAME]", "Its next frame is lost, or so many, or of one kind.",
          toFrames(&Mcu::dropNext) },
        { "mcu drop every AMOUNT", "Each so many-th of its frames is lost; 0 ends it.",
          on(&Unit::mcu, [](Mcu& mcu, auto& given) { mcu.dropEvery(given.number(0)); }) },
        { "mcu corrupt [AMOUNT] [FRAME]", "They have a wrong sum.", toFrames(&Mcu::corruptNext) },
        { "mcu repeat [AMOUNT] [FRAME]", "They come twice.", toFrames(&Mcu::repeatNext) },
        { "mcu no-ack [AMOUNT] [FRAME]", "It neither takes nor acknowledges the unit's next frames.",
          toFrames(&Mcu::withholdAcks) },
        { "mcu well", "Ends all its faults.", on(&Unit::mcu, &Mcu::clearFaults) },
    };
}

} // namespace Bench
