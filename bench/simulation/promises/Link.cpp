#include "bench/mcu/McuFrame.h"
#include "bench/simulation/Promises.h"

#include <deque>

namespace Simulation
{

namespace
{

using namespace std::chrono_literals;
using Bench::McuFrame;

/** Before the second and the third transmission, and before the frame is given up; each a little more or less. */
constexpr std::chrono::milliseconds pauses[] { 200ms, 400ms, 800ms };
constexpr auto moreOrLess = 60ms;
constexpr int transmissions = static_cast<int>(std::size(pauses));

std::string nameOf(const McuFrame& frame)
{
    return Bench::unitCommandName(frame.command) + " " + std::to_string(frame.sequence);
}

/** Both directions of the microcontroller's link, as its bytes tell. */
class Link
{
public:
    void watch(SimulatedUnit& unit)
    {
        unit.lookout.link.add(
            [this](bool fromUnit, std::span<const std::uint8_t> bytes)
            {
                if (fromUnit)
                    sent.push(bytes, [this](const McuFrame& frame) { onSent(frame); });
                else
                    received.push(bytes, [this](const McuFrame& frame) { onReceived(frame); });
            });
        unit.lookout.lines.add([this](const std::string&, const std::string& line)
                               { givenUpByLog += line.starts_with("MCU Send Error ID!") ? 1 : 0; });
    }

    std::string wrong() const { return broken; }

    std::string leftOver() const
    {
        if (inFlight && !inFlight->acknowledged && !mayBeGivenUp())
            return nameOf(inFlight->frame) + " waits for its acknowledgement";
        if (!owed.empty())
            return "frame " + std::to_string(owed.front()) + " of the microcontroller is not acknowledged";
        if (const int givenUp = given + (inFlight && !inFlight->acknowledged ? 1 : 0); givenUp != givenUpByLog)
            return std::to_string(givenUp) + " frames were given up, the log knows of " + std::to_string(givenUpByLog);
        return {};
    }

private:
    struct InFlight
    {
        McuFrame frame;
        int times = 1;
        Clock::time_point sentAt;
        std::optional<Clock::time_point> acknowledged {};
    };

    Bench::McuFrameReader sent, received;
    std::optional<InFlight> inFlight; ///< or the last one that was
    std::deque<int> owed;             ///< acknowledgements, by the sequences of the frames
    int last = -1, beforeLast = -1;   ///< sequences of the microcontroller's frames; these are not taken again
    int given = 0, givenUpByLog = 0;
    std::string broken;

    void breaks(const std::string& what)
    {
        if (broken.empty())
            broken = what;
    }

    bool isAfter(std::chrono::milliseconds pause) const
    {
        const auto passed = Clock::now() - inFlight->sentAt;
        return passed > pause - moreOrLess && passed < pause + moreOrLess;
    }
    bool mayBeGivenUp() const
    {
        return inFlight->times == transmissions &&
               Clock::now() - inFlight->sentAt > pauses[transmissions - 1] - moreOrLess;
    }

    void onSent(const McuFrame& frame)
    {
        if (frame.isAck())
            return onOwnAcknowledgement(frame.sequence);
        if (!inFlight)
            inFlight = { .frame = frame, .sentAt = Clock::now() };
        else if (frame.sequence == inFlight->frame.sequence)
            onAgain(frame);
        else
            onNext(frame);
    }

    void onAgain(const McuFrame& frame)
    {
        if (frame != inFlight->frame)
            return breaks(nameOf(frame) + " has the number of " + nameOf(inFlight->frame));
        // One that has just come may still wait for its thread.
        if (inFlight->acknowledged && *inFlight->acknowledged + moreOrLess < Clock::now())
            return breaks(nameOf(frame) + " is sent again, although it was acknowledged");
        if (inFlight->times == transmissions)
            return breaks(nameOf(frame) + " is sent too often");
        if (!isAfter(pauses[inFlight->times - 1]))
            return breaks(nameOf(frame) + " is not sent again when it is time");
        ++inFlight->times;
        inFlight->sentAt = Clock::now();
    }

    void onNext(const McuFrame& frame)
    {
        if (frame.sequence != static_cast<std::uint8_t>(inFlight->frame.sequence + 1))
            return breaks(nameOf(frame) + " follows " + nameOf(inFlight->frame));
        if (!inFlight->acknowledged && !mayBeGivenUp())
            return breaks(nameOf(frame) + " is sent while " + nameOf(inFlight->frame) +
                          " waits for its acknowledgement");
        given += inFlight->acknowledged ? 0 : 1;
        inFlight = { .frame = frame, .sentAt = Clock::now() };
    }

    void onReceived(const McuFrame& frame)
    {
        if (frame.isAck())
        {
            if (inFlight && inFlight->frame.sequence == frame.sequence && !inFlight->acknowledged)
                inFlight->acknowledged = Clock::now();
            return;
        }
        if (frame.sequence == last || frame.sequence == beforeLast)
            return;
        beforeLast = std::exchange(last, frame.sequence);
        owed.push_back(frame.sequence);
    }

    void onOwnAcknowledgement(int sequence)
    {
        if (owed.empty() || owed.front() != sequence)
            return breaks("frame " + std::to_string(sequence) + " is acknowledged, " +
                          (owed.empty() ? "none" : std::to_string(owed.front())) + " is due");
        owed.pop_front();
    }
};

std::string inOrder(SimulatedUnit&, const Since&)
{
    return only<Link>().wrong();
}

std::string nothingLeftOver(SimulatedUnit&, const Since&)
{
    return only<Link>().leftOver();
}

constexpr Promise all[] {
    { "one frame after the other, each until it is acknowledged", inOrder, false, watchWith<Link> },
    { "every frame is acknowledged or given up", nothingLeftOver, true },
};

} // namespace

std::span<const Promise> linkPromises()
{
    return all;
}

} // namespace Simulation
