#include "bench/mcu/Mcu.h"
#include "bench/simulation/Promises.h"

#include <set>

namespace Simulation
{

namespace
{

using namespace std::chrono_literals;

/** Six seconds for the satellite tuner, eight for the programs, and the frames. */
constexpr auto longest = 15s;

bool linkFailed(const SimulatedUnit& unit, const Since& since)
{
    return !unit.journal
                .find(since.begin, 1,
                      [](const Bench::Event& event)
                      { return event.stream == "mcu link" && event.text != "back" && !event.text.starts_with("rep"); })
                .empty();
}

/** The frames that say it; one that comes again has its old number. And when the unit began to listen. */
class Readies
{
public:
    void watch(SimulatedUnit& unit)
    {
        unit.lookout.link.add(
            [this](bool fromUnit, std::span<const std::uint8_t> bytes)
            {
                if (fromUnit)
                    sent.push(bytes,
                              [this](const Bench::McuFrame& frame)
                              {
                                  if (frame.command == Bench::Mcu::powerOff)
                                      numbers.insert(frame.sequence);
                                  else if (frame.command == Bench::Mcu::lastMemory && !listens)
                                      listens = Clock::now();
                              });
            });
    }

    std::size_t count() const { return numbers.size(); }
    /** What the microcontroller says before the unit has asked for its last memory, nobody hears. */
    bool wasHeard(Clock::time_point time) const { return listens && *listens < time; }

private:
    Bench::McuFrameReader sent;
    std::set<int> numbers;
    std::optional<Clock::time_point> listens;
};

std::string oneReady(SimulatedUnit& unit, const Since& since)
{
    if (const auto times = only<Readies>().count(); times > 1)
        return "the unit said it " + std::to_string(times) + " times";
    const bool isReady = unit.mcu.isUnitReadyForPowerOff();
    if (isReady && !since.powerOffAt)
        return "nobody had asked for it";
    if (!isReady && since.powerOffAt && only<Readies>().wasHeard(*since.powerOffAt) &&
        unit.scheduler.now() - *since.powerOffAt > longest && !linkFailed(unit, since))
        return "it has not come";
    return {};
}

constexpr Promise all[] { { "power-off ends with one ready", oneReady, false, watchWith<Readies> } };

} // namespace

std::span<const Promise> powerOffPromises()
{
    return all;
}

} // namespace Simulation
