#include "bench/mcu/Mcu.h"

#include <algorithm>
#include <utility>

namespace Bench
{

namespace
{

constexpr std::size_t recentFrames = 12;
constexpr std::size_t longestQueue = 1000;

} // namespace

Mcu::Mcu(Journal& journalToUse, SerialLine& lineToUse)
    : journal(journalToUse)
    , line(lineToUse)
{
    current.deviceId.resize(deviceIdSize);
    line.received = [this](std::span<const std::uint8_t> bytes) { take(bytes); };
}

void Mcu::unitRestarts()
{
    line.flush();
    ownSeries.clear();
    forgetTraffic();
    lastHeartbeat.reset();
    current.source.reset();
    current.agreed = current.readyForPowerOff = cutsWhenReady = false;
    current.deviceStatus.reset();
}

void Mcu::reset()
{
    journal.add("mcu link", "reset");
    current.givenUp += static_cast<unsigned>(queue.size()) + (inFlight ? 1 : 0);
    forgetTraffic();
    current.source = current.source.value_or(current.lastMemory);
    current.agreed = true;
    sequence = 0;
    resetListener();
}

void Mcu::forgetTraffic()
{
    reader.reset();
    queue.clear();
    delayed.clear();
    inFlight.reset();
    lastReceived.reset();
    current.wanted.reset();
}

void Mcu::requestSource(Source source)
{
    if (!(current.agreed && current.source == source)) // the unit does not answer what it already does
    {
        current.wanted = source;
        current.agreed = false;
    }
    askForSource(source);
}

void Mcu::setLastMemory(Source source)
{
    current.lastMemory = source;
    journal.add("mcu memory", sourceName(source) + " after the unit's next start");
}

void Mcu::askForSource(Source source)
{
    send({ sourceSwitch, { static_cast<std::uint8_t>(source.type), static_cast<std::uint8_t>(source.number) } });
}

void Mcu::requestPowerOff(bool kept)
{
    cutsWhenReady = !kept;
    send({ powerOff, {} });
}

bool Mcu::FaultyFrames::take(int commandOfFrame)
{
    if (left <= 0 || command.value_or(commandOfFrame) != commandOfFrame)
        return false;
    --left;
    return true;
}

void Mcu::silence(Milliseconds duration)
{
    if (!faults.silentUntil && duration.count() > 0)
        journal.add("mcu link", "silent");
    faults.silentUntil = now + duration;
}

void Mcu::clearFaults()
{
    const auto wasSilent = faults.silentUntil.has_value();
    faults = {};
    if (wasSilent)
        faults.silentUntil = now; // ends with the deadlines, which take the link up again
}

Mcu::State Mcu::state() const
{
    auto copy = current;
    copy.silent = faults.silentUntil.has_value();
    copy.waiting = queue.size() + (inFlight ? 1 : 0);
    copy.damaged = reader.checksumErrors();
    if (lastHeartbeat)
        copy.sinceHeartbeat = std::chrono::duration_cast<Milliseconds>(now - *lastHeartbeat);
    return copy;
}

void Mcu::take(std::span<const std::uint8_t> bytes)
{
    if (faults.silentUntil)
        return;
    reader.push(bytes,
                [this](const McuFrame& frame)
                {
                    if (frame.isAck())
                        onAck(frame);
                    else
                        onFrame(frame);
                });
}

std::optional<Clock::time_point> Mcu::due() const
{
    auto next = ownSeries.due();
    const auto orAt = [&](std::optional<Clock::time_point> time)
    {
        if (time && (!next || *time < *next))
            next = time;
    };
    if (faults.silentUntil)
        orAt(faults.silentUntil);
    else
        orAt(inFlight ? inFlight->due : ownSeries.playDue());
    if (!delayed.empty())
        orAt(delayed.front().first);
    return next;
}

void Mcu::doDue()
{
    runDeadlines();
    ownSeries.advance(now);
    sendNext();
}

void Mcu::runDeadlines()
{
    while (!delayed.empty() && delayed.front().first <= now)
    {
        writeNow(delayed.front().second);
        delayed.pop_front();
    }
    if (faults.silentUntil)
    {
        if (*faults.silentUntil > now)
            return;
        faults.silentUntil.reset();
        reader.reset();
        journal.add("mcu link", "back");
        if (inFlight)
            *inFlight = { inFlight->frame, transmissions, now };
    }
    if (!inFlight || inFlight->due > now)
        return;
    if (inFlight->transmissionsLeft > 0)
    {
        ++current.resent;
        transmitInFlight();
        return;
    }
    ++current.givenUp;
    journal.add("mcu link", "gave up " + mcuCommandName(inFlight->frame.command));
    inFlight.reset();
}

void Mcu::onAck(const McuFrame& frame)
{
    if (!inFlight || frame.sequence != inFlight->frame.sequence)
        return;
    const auto told = std::exchange(inFlight, {})->frame;
    // Before it knows of the agreement, the unit would not ask for another source.
    if (told.command == sourceReport && told.data.size() >= 2 && !current.wanted)
        agreed({ told.data[0], told.data[1] });
}

void Mcu::onFrame(const McuFrame& frame)
{
    if (faults.withheldAcks.take(frame.command))
    {
        journal.add("mcu link", "did not acknowledge " + unitCommandName(frame.command));
        return;
    }
    put(encode(McuFrame::ack(frame.sequence)));
    // A frame that comes again was received before, but its acknowledgement was lost.
    if (lastReceived == frame)
    {
        ++current.duplicates;
        note("<-", frame, unitCommandName(frame.command), "  again");
        return;
    }
    lastReceived = frame;
    ++current.received;
    note("<-", frame, unitCommandName(frame.command));
    journal.add("frame " + unitCommandName(frame.command), hex(frame.data));
    act(frame);
}

void Mcu::act(const McuFrame& frame)
{
    const auto source = frame.data.size() >= 2 ? std::optional(Source { frame.data[0], frame.data[1] }) : std::nullopt;
    switch (frame.command)
    {
    case lastMemory:
        send({ lastMemory, {} });
        current.wanted = current.lastMemory;
        current.agreed = false;
        askForSource(current.lastMemory);
        break;
    case sourceSwitch:
        if (source)
        {
            current.wanted.reset();
            take(*source);
            send({ sourceReport, frame.data });
        }
        break;
    case sourceReport:
        if (source && (source == current.wanted || source == current.source))
        {
            take(*source);
            agreed(*source);
        }
        else if (source)
            journal.add("mcu link", "confirmed " + sourceName(*source) + ", which was not asked for");
        break;
    case deviceStatus:
        current.deviceStatus = frame.data;
        break;
    case powerOff:
        current.readyForPowerOff = true;
        journal.add("mcu ready-for-power-off", "ready");
        if (std::exchange(cutsWhenReady, false))
            cutPower();
        break;
    case factoryReset:
        cutPower();
        break;
    case heartBeat:
        ++current.heartbeats;
        lastHeartbeat = now;
        break;
    case setDeviceId:
        storeDeviceId(frame.data);
        break;
    case getDeviceId:
        send({ getDeviceId, current.deviceId });
        break;
    default:
        break; // the microcontroller itself has no more to do with it
    }
    tell({ true, frame.command, frame.data });
}

void Mcu::tell(const Frame& frame) const
{
    for (const auto& listener : listeners)
        listener(frame);
}

void Mcu::take(Source source)
{
    current.source = source;
    current.lastMemory = source;
    sourceListener(source);
    journal.add("mcu source", sourceName(source));
}

void Mcu::agreed(Source source)
{
    current.wanted.reset();
    current.agreed = true;
    journal.add("mcu agreed", sourceName(source));
}

void Mcu::storeDeviceId(const Bytes& id)
{
    if (id.size() != deviceIdSize)
        return journal.add("mcu link", "a device id of " + std::to_string(id.size()) + " bytes, not taken");
    current.deviceId = id;
    journal.add("mcu device-id", hex(id));
}

void Mcu::send(McuMessage message)
{
    message.data.resize(std::min(message.data.size(), McuFrame::maxData));
    if (queue.size() >= longestQueue)
        journal.add("mcu link", "queue full, lost " + mcuCommandName(message.command));
    else
        queue.push_back(std::move(message));
}

void Mcu::sendNext()
{
    if (inFlight || faults.silentUntil)
        return;
    if (queue.empty())
        if (auto own = ownSeries.next()) // after everything else, so that none of this makes the queue grow
            send(std::move(*own));
    if (queue.empty())
        return;
    auto next = std::move(queue.front());
    queue.pop_front();
    ++current.sent;
    inFlight = { McuFrame { ++sequence, static_cast<std::uint16_t>(next.command), std::move(next.data) },
                 transmissions,
                 {} };
    note("->", inFlight->frame, mcuCommandName(inFlight->frame.command));
    transmitInFlight();
    tell({ false, next.command, inFlight->frame.data, next.toEverybody });
}

void Mcu::transmitInFlight()
{
    --inFlight->transmissionsLeft;
    inFlight->due = now + resendAfter + faults.delay;
    const auto command = inFlight->frame.command;
    const auto name = mcuCommandName(command);
    journal.add("sent " + name, hex(inFlight->frame.data));
    const auto isNth = faults.dropEvery > 0 && ++faults.dropCount % faults.dropEvery == 0;
    if (faults.drop.take(command) || isNth)
    {
        journal.add("mcu link", "dropped " + name);
        return;
    }
    auto bytes = encode(inFlight->frame);
    if (faults.corrupt.take(command))
    {
        bytes.back() ^= 0xFF;
        journal.add("mcu link", "corrupted " + name);
    }
    put(bytes);
    if (faults.repeat.take(command))
    {
        put(bytes);
        journal.add("mcu link", "repeated " + name);
    }
}

void Mcu::put(const Bytes& bytes)
{
    if (faults.delay.count() > 0 || !delayed.empty())
        delayed.emplace_back(now + faults.delay, bytes);
    else
        writeNow(bytes);
}

void Mcu::writeNow(const Bytes& bytes)
{
    if (faults.silentUntil)
        return;
    // A unit that does not read fills the terminal's buffer; what does not fit is lost, as on a wire.
    if (!line.write(bytes))
        journal.add("mcu link", "the unit does not read: bytes lost");
}

void Mcu::note(const char* direction, const McuFrame& frame, const std::string& name, const char* remark)
{
    current.recent.push_back(std::string(direction) + " " + name + (frame.data.empty() ? "" : "  " + hex(frame.data)) +
                             remark);
    if (current.recent.size() > recentFrames)
        current.recent.pop_front();
}

} // namespace Bench
