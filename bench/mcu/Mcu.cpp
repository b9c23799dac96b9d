#include "bench/mcu/Mcu.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace Bench
{

namespace
{

// The commands that the microcontroller itself understands or sends.
constexpr int lastMemory = 1;
constexpr int sourceSwitch = 2;
constexpr int sourceReport = 3;
constexpr int deviceStatus = 4;
constexpr int powerOff = 6;
constexpr int dimmer = 18;
constexpr int voltage = 19;
constexpr int muteState = 20;
constexpr int heartBeat = 23;
constexpr int autoTest = 25;
constexpr int setDeviceId = 26;
constexpr int getDeviceId = 27;

constexpr std::size_t recentFrames = 12;
constexpr std::size_t longestQueue = 1000;

/** The band of a source that is the tuner's. */
std::optional<Tuner::Band> bandOf(Source source)
{
    constexpr int amType = 0, fmType = 1, weatherType = 22;
    switch (source.type)
    {
    case amType:
        return Tuner::am;
    case fmType:
        return Tuner::fm;
    case weatherType:
        return Tuner::weather;
    default:
        return {};
    }
}

} // namespace

Mcu::Mcu(Journal& journalToUse)
    : journal(journalToUse)
{
    current.deviceId.resize(deviceIdSize);
}

Mcu::~Mcu()
{
    stop();
}

std::string Mcu::start()
{
    if (auto error = line.open(); !error.empty())
        return error;
    wakeUp = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeUp < 0)
        return std::string("eventfd: ") + std::strerror(errno);
    stopping = false;
    thread = std::thread([this] { run(); });
    return {};
}

void Mcu::stop()
{
    if (thread.joinable())
    {
        stopping = true;
        wake();
        thread.join();
    }
    line.close();
    if (wakeUp >= 0)
        ::close(std::exchange(wakeUp, -1));
}

void Mcu::wake()
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(wakeUp, &one, sizeof one);
}

void Mcu::change(const std::function<void()>& what)
{
    {
        const std::scoped_lock guard(lock);
        what();
    }
    wake();
}

void Mcu::unitRestarts()
{
    change(
        [this]
        {
            line.flush();
            reader.reset();
            for (auto& each : series)
                endSeries(each);
            endPlaying();
            heardAutoTest.clear();
            heardNetwork.clear();
            queue.clear();
            delayed.clear();
            inFlight.reset();
            lastReceived.reset();
            lastHeartbeat.reset();
            current.source.reset();
            current.wanted.reset();
            current.agreed = current.muted = current.readyForPowerOff = false;
            current.powered = true;
            current.deviceStatus.reset();
        });
}

void Mcu::send(int command, Bytes data)
{
    change([&] { sendLater(command, std::move(data)); });
}

void Mcu::requestSource(Source source)
{
    change(
        [&]
        {
            if (!(current.agreed && current.source == source)) // the unit does not answer what it already does
            {
                current.wanted = source;
                current.agreed = false;
            }
            sendLater(sourceSwitch,
                      { static_cast<std::uint8_t>(source.type), static_cast<std::uint8_t>(source.number) });
        });
}

void Mcu::requestDeviceStatus()
{
    send(deviceStatus, {});
}

void Mcu::requestPowerOff()
{
    send(powerOff, {});
}

void Mcu::setLastMemory(Source source)
{
    change([&] { current.lastMemory = source; });
}

bool Mcu::FaultyFrames::take(int commandOfFrame)
{
    if (left <= 0 || command.value_or(commandOfFrame) != commandOfFrame)
        return false;
    --left;
    return true;
}

void Mcu::dropNext(FaultyFrames frames)
{
    change([&] { faults.drop = frames; });
}

void Mcu::dropEvery(int nth)
{
    change([&] { faults.dropEvery = nth, faults.dropCount = 0; });
}

void Mcu::corruptNext(FaultyFrames frames)
{
    change([&] { faults.corrupt = frames; });
}

void Mcu::repeatNext(FaultyFrames frames)
{
    change([&] { faults.repeat = frames; });
}

void Mcu::withholdAcks(FaultyFrames frames)
{
    change([&] { faults.withheldAcks = frames; });
}

void Mcu::delayBy(Milliseconds delay)
{
    change([&] { faults.delay = delay; });
}

void Mcu::silence(Milliseconds duration)
{
    change(
        [&]
        {
            if (!faults.silentUntil && duration.count() > 0)
                journal.add("mcu link", "silent");
            faults.silentUntil = Clock::now() + duration;
        });
}

void Mcu::clearFaults()
{
    change(
        [this]
        {
            const auto silentUntil = faults.silentUntil;
            faults = {};
            if (silentUntil)
                faults.silentUntil = Clock::now(); // ends through the thread, which takes the link up again
        });
}

Mcu::State Mcu::state() const
{
    const std::scoped_lock guard(lock);
    auto copy = current;
    copy.silent = faults.silentUntil.has_value();
    copy.damaged = reader.checksumErrors();
    if (lastHeartbeat)
        copy.sinceHeartbeat = std::chrono::duration_cast<Milliseconds>(Clock::now() - *lastHeartbeat);
    return copy;
}

void Mcu::run()
{
    while (!stopping)
    {
        std::array<pollfd, 2> waits { pollfd { line.descriptor(), POLLIN, 0 }, pollfd { wakeUp, POLLIN, 0 } };
        Milliseconds timeout;
        {
            const std::scoped_lock guard(lock);
            timeout = untilNextDeadline();
        }
        if (::poll(waits.data(), waits.size(), static_cast<int>(timeout.count())) < 0 && errno != EINTR)
        {
            journal.add("mcu link", std::string("poll: ") + std::strerror(errno));
            return;
        }
        std::uint64_t count = 0;
        [[maybe_unused]] const auto got = ::read(wakeUp, &count, sizeof count);

        std::vector<Bytes> heard;
        std::vector<NetworkFrame> network;
        {
            const std::scoped_lock guard(lock);
            readPort();
            runDeadlines();
            advanceSeries();
            sendNext();
            heard.swap(heardAutoTest);
            network.swap(heardNetwork);
        }
        if (autoTestListener)
            for (const auto& data : heard)
                autoTestListener(data);
        for (const auto& frame : network)
            for (const auto& listener : networkListeners)
                listener(frame);
    }
}

Mcu::Milliseconds Mcu::untilNextDeadline() const
{
    auto next = nextTurn();
    if (faults.silentUntil)
        next = std::min(next, *faults.silentUntil);
    else if (inFlight)
        next = std::min(next, inFlight->due);
    if (!delayed.empty())
        next = std::min(next, delayed.front().first);
    const auto left = std::chrono::ceil<Milliseconds>(next - Clock::now());
    return std::max(left, Milliseconds(0));
}

void Mcu::readPort()
{
    std::array<std::uint8_t, 512> buffer {};
    for (;;)
    {
        const auto count = ::read(line.descriptor(), buffer.data(), buffer.size());
        if (count <= 0)
            return;
        if (faults.silentUntil)
            continue;
        reader.push({ buffer.data(), static_cast<std::size_t>(count) },
                    [this](const McuFrame& frame)
                    {
                        if (frame.isAck())
                            onAck(frame);
                        else
                            onFrame(frame);
                    });
    }
}

void Mcu::runDeadlines()
{
    const auto now = Clock::now();
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
        agreeOn({ told.data[0], told.data[1] });
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
        sendLater(lastMemory, {});
        current.wanted = current.lastMemory;
        current.agreed = false;
        sendLater(sourceSwitch, { static_cast<std::uint8_t>(current.lastMemory.type),
                                  static_cast<std::uint8_t>(current.lastMemory.number) });
        reportSupply();
        break;
    case sourceSwitch:
        if (source)
        {
            current.wanted.reset();
            sendLater(sourceReport, frame.data);
        }
        break;
    case sourceReport:
        if (source && (source == current.wanted || source == current.source))
            agreeOn(*source);
        else if (source)
            journal.add("mcu link", "confirmed " + sourceName(*source) + ", which was not asked for");
        break;
    case deviceStatus:
        current.deviceStatus = frame.data;
        break;
    case keyCommand:
        answerPowerRequest(frame.data);
        break;
    case powerOff:
        current.readyForPowerOff = true;
        journal.add("mcu ready-for-power-off", "ready");
        break;
    case muteState:
        current.muted = !frame.data.empty() && frame.data.front() != 0;
        break;
    case heartBeat:
        ++current.heartbeats;
        lastHeartbeat = Clock::now();
        break;
    case autoTest:
        heardAutoTest.push_back(frame.data);
        break;
    case setDeviceId:
        storeDeviceId(frame.data);
        break;
    case getDeviceId:
        sendLater(getDeviceId, current.deviceId);
        break;
    case dimmer:
        if (!frame.data.empty() && frame.data[0] > 0)
            current.dimmer = frame.data[0] - 1;
        break;
    case dataBlock:
    case version:
    case pgnParcel:
    case mediaInfo:
        noteNetwork(true, frame.command, frame.data);
        break;
    default:
        send(radio.hear(frame.command, frame.data));
        break; // recorded above; the microcontroller has no more to do with it here
    }
}

void Mcu::send(const Tuner::Reports& reports)
{
    for (const auto& [command, data] : reports)
        sendLater(command, data);
    if (!reports.empty())
        journal.add("mcu tuner", radio.text());
}

void Mcu::useTuner(const std::function<Tuner::Reports(Tuner&)>& what)
{
    change([&] { send(what(radio)); });
}

Tuner Mcu::tuner() const
{
    const std::scoped_lock guard(lock);
    return radio;
}

void Mcu::reportSupply()
{
    constexpr double voltsPerStep = 25.3 / 256;
    constexpr double highest = 255;
    const auto raw = std::clamp(std::round(current.supply / voltsPerStep), 0.0, highest);
    sendLater(voltage, { static_cast<std::uint8_t>(raw),
                         static_cast<std::uint8_t>((current.trigger ? 1 : 0) | (current.lights ? 2 : 0)) });
}

void Mcu::setSupply(double volts)
{
    change([&] { current.supply = volts, reportSupply(); });
}

void Mcu::setLights(bool on)
{
    change([&] { current.lights = on, reportSupply(); });
}

void Mcu::setTrigger(bool on)
{
    change([&] { current.trigger = on, reportSupply(); });
}

void Mcu::setDimmer(int level)
{
    change(
        [&]
        {
            current.dimmer = level;
            const auto byte = static_cast<std::uint8_t>(level + 1);
            sendLater(dimmer, { byte, byte });
        });
}

void Mcu::agreeOn(Source source)
{
    current.source = source;
    current.lastMemory = source;
    current.wanted.reset();
    current.agreed = true;
    if (const auto band = bandOf(source))
        send(radio.select(*band));
    journal.add("mcu source", sourceName(source));
    journal.add("mcu agreed", sourceName(source));
}

void Mcu::storeDeviceId(const Bytes& id)
{
    if (id.size() != deviceIdSize)
        return journal.add("mcu link", "a device id of " + std::to_string(id.size()) + " bytes, not taken");
    current.deviceId = id;
    journal.add("mcu device-id", hex(id));
}

void Mcu::sendLater(int command, Bytes data)
{
    data.resize(std::min(data.size(), McuFrame::maxData));
    if (queue.size() >= longestQueue)
        journal.add("mcu link", "queue full, lost " + mcuCommandName(command));
    else
        queue.push_back({ command, std::move(data) });
}

void Mcu::sendNext()
{
    if (inFlight || faults.silentUntil)
        return;
    queueWaiting();
    if (queue.empty())
        return;
    auto next = std::move(queue.front());
    queue.pop_front();
    if (next.command == keyCommand)
        followPowerKey(next.data);
    ++current.sent;
    inFlight = { McuFrame { ++sequence, static_cast<std::uint16_t>(next.command), std::move(next.data) },
                 transmissions,
                 {} };
    note("->", inFlight->frame, mcuCommandName(inFlight->frame.command));
    noteNetwork(false, inFlight->frame.command, inFlight->frame.data);
    transmitInFlight();
}

void Mcu::transmitInFlight()
{
    --inFlight->transmissionsLeft;
    inFlight->due = Clock::now() + resendAfter + faults.delay;
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
        delayed.emplace_back(Clock::now() + faults.delay, bytes);
    else
        writeNow(bytes);
}

void Mcu::writeNow(const Bytes& bytes)
{
    if (faults.silentUntil)
        return;
    // A unit that does not read fills the terminal's buffer; what does not fit is lost, as on a wire.
    if (::write(line.descriptor(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
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
