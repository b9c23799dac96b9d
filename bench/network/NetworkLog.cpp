#include "bench/network/NetworkLog.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace Bench
{

namespace
{

/** Also refuses what the network carries, but the link does not. */
ParsedNetworkLine parseForUnit(const std::string& text)
{
    auto line = parseNetworkLine(text);
    if (line.message && line.message->data.size() > longestToUnit)
        line.error = std::to_string(line.message->data.size()) + " bytes, but at most " +
                     std::to_string(longestToUnit) + " reach the unit";
    return line;
}

bool isForUnit(const NetworkMessage& message)
{
    return message.source != unitAddress && (message.destination == unitAddress || message.destination == everybody);
}

std::string failure(const std::string& file)
{
    return file + ": " + std::strerror(errno);
}

} // namespace

NetworkLog::NetworkLog(Journal& journalToUse, Mcu& mcuToUse, Loop& loop)
    : journal(journalToUse)
    , mcu(mcuToUse)
    , server(loop)
{
    mcu.addListener([this](const Mcu::Frame& frame) { hear(frame); });
}

std::string NetworkLog::logTo(const std::string& file)
{
    std::ofstream next(file, std::ios::app);
    if (!next)
        return failure(file);
    const auto before = next.tellp();
    output = std::move(next);
    current.file = file;
    journal.add("n2k", "log goes to " + file + (before > 0 ? ", behind what is there" : ""));
    return {};
}

void NetworkLog::stopLogging()
{
    output.close();
    if (!std::exchange(current.file, {}).empty())
        journal.add("n2k", "log is off");
}

void NetworkLog::stopServing()
{
    if (server.port() != 0)
        journal.add("n2k", "nobody is served any more");
    server.close();
}

std::string NetworkLog::serve(int port)
{
    return server.listen(port, { [this](const std::string& line) { feed(line); },
                                 [this](const std::string& what) { journal.add("n2k", what); } });
}

NetworkLog::State NetworkLog::state() const
{
    State copy = current;
    copy.port = server.port();
    copy.readers = server.readers();
    copy.dropped = server.dropped();
    return copy;
}

void NetworkLog::hear(const Mcu::Frame& frame)
{
    if (frame.command != Mcu::pgnParcel)
        return;
    const auto message = frame.fromUnit ? messageFromUnit(frame.data) : messageToUnit(frame.data);
    if (!message)
        return; // the display says so
    using namespace std::chrono;
    const auto line = lineOf(*message, floor<milliseconds>(system_clock::now()));
    ++current.logged;
    if (output.is_open() && !(output << line << "\n" << std::flush))
    {
        journal.add("n2k", "the log ends: " + failure(current.file));
        output.close();
        current.file.clear();
    }
    server.send(line);
}

void NetworkLog::feed(const std::string& line)
{
    const auto parsed = parseForUnit(line);
    const bool goes = parsed.error.empty() && parsed.message && isForUnit(*parsed.message);
    if (!parsed.error.empty())
        journal.add("n2k", "a reader's line is refused: " + parsed.error);
    if (goes)
        mcu.send({ Mcu::pgnParcel, parcelToUnit(*parsed.message) });
    current.fed += goes ? 1 : 0;
    current.refused += parsed.error.empty() ? 0 : 1;
    current.skipped += parsed.message && parsed.error.empty() && !goes ? 1 : 0;
}

std::string NetworkLog::play(const std::string& file, std::optional<double> speed)
{
    using FloatingMs = std::chrono::duration<double, std::milli>;
    // So that a clock that was set between two lines does not overflow the one that plays.
    constexpr FloatingMs longest = std::chrono::years(1);
    std::ifstream input(file);
    if (!input)
        return failure(file);
    std::vector<McuSeries::TimedFrame> frames;
    std::optional<NetworkTime> before;
    FloatingMs due { 0 };
    unsigned number = 0, skipped = 0;
    for (std::string text; std::getline(input, text);)
    {
        ++number;
        const auto line = parseForUnit(text);
        if (!line.error.empty())
            return file + ":" + std::to_string(number) + ": " + line.error;
        if (!line.message)
            continue;
        if (speed && before)
            due = std::min(longest, due + std::max(FloatingMs(0), FloatingMs(line.time - *before) / *speed));
        before = line.time;
        if (isForUnit(*line.message))
            frames.push_back({ std::chrono::duration_cast<McuSeries::Milliseconds>(due),
                               { Mcu::pgnParcel, parcelToUnit(*line.message) } });
        else
            ++skipped;
    }
    if (input.bad())
        return failure(file);
    current.skipped += skipped;
    mcu.series().play(file + ", " + std::to_string(skipped) + " skipped", std::move(frames));
    return {};
}

} // namespace Bench
