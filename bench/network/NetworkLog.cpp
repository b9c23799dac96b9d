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
NetworkLineReader::Line readForUnit(NetworkLineReader& reader, const std::string& text)
{
    auto line = reader.read(text);
    if (line.message && line.message->data.size() > longestToUnit)
        line.error = std::to_string(line.message->data.size()) + " bytes, but at most " +
                     std::to_string(longestToUnit) + " reach the unit";
    return line;
}

McuMessage frameToUnit(const NetworkMessage& message)
{
    return { Mcu::pgnParcel, parcelToUnit(message), message.destination == everybody };
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

NetworkLog::NetworkLog(Journal& journalToUse, Mcu& mcuToUse, NetworkNode& node, Loop& loop)
    : journal(journalToUse)
    , mcu(mcuToUse)
    , server(loop)
{
    node.addListener([this](const NetworkMessage& message) { hear(message); });
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

std::string NetworkLog::serve(int port, LineForm form)
{
    auto error = server.listen(port, { [this](const std::string& line) { return feed(line); },
                                       [this](const std::string& what) { journal.add("n2k", what); } });
    if (error.empty())
        served = form;
    return error;
}

NetworkLog::State NetworkLog::state() const
{
    State copy = current;
    copy.port = server.port();
    copy.readers = server.readers();
    copy.dropped = server.dropped();
    copy.incomplete = reader.incomplete();
    return copy;
}

void NetworkLog::hear(const NetworkMessage& message)
{
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    ++current.logged;
    if (output.is_open() && !(output << writer.write(message, now, LineForm::commas).front() << "\n" << std::flush))
    {
        journal.add("n2k", "the log ends: " + failure(current.file));
        output.close();
        current.file.clear();
    }
    for (const auto& line : writer.write(message, now, served))
        server.send(line);
}

/** What the reader gets for it. */
std::string NetworkLog::feed(const std::string& text)
{
    const auto line = readForUnit(reader, text);
    if (!line.error.empty())
    {
        ++current.refused;
        journal.add("n2k", "a reader's line is refused: " + line.error);
        return "# refused: " + line.error;
    }
    if (line.message && isForUnit(*line.message))
    {
        ++current.fed;
        mcu.send(frameToUnit(*line.message));
    }
    else if (line.message)
        ++current.skipped;
    return {};
}

std::string NetworkLog::play(const std::string& file, std::optional<double> speed)
{
    using FloatingMs = std::chrono::duration<double, std::milli>;
    // So that a clock that was set between two lines does not overflow the one that plays.
    constexpr FloatingMs longest = std::chrono::years(1);
    std::ifstream input(file);
    if (!input)
        return failure(file);
    NetworkLineReader fileReader;
    std::vector<McuSeries::TimedFrame> frames;
    std::optional<NetworkTime> before;
    FloatingMs due { 0 };
    unsigned number = 0, skipped = 0;
    for (std::string text; std::getline(input, text);)
    {
        ++number;
        const auto line = readForUnit(fileReader, text);
        if (line.isStray) // the log began in the middle of a message
        {
            ++skipped;
            continue;
        }
        if (!line.error.empty())
            return file + ":" + std::to_string(number) + ": " + line.error;
        if (!line.message)
            continue;
        if (speed && before)
            due = std::min(longest, due + std::max(FloatingMs(0), FloatingMs(line.time - *before) / *speed));
        before = line.time;
        if (isForUnit(*line.message))
            frames.push_back({ std::chrono::duration_cast<McuSeries::Milliseconds>(due), frameToUnit(*line.message) });
        else
            ++skipped;
    }
    if (input.bad())
        return failure(file);
    skipped += fileReader.incomplete();
    current.skipped += skipped;
    mcu.series().play(file + ", " + std::to_string(skipped) + " skipped", std::move(frames));
    return {};
}

} // namespace Bench
