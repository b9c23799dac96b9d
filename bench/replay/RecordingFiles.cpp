#include "bench/replay/RecordingFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace Replay
{

namespace fs = std::filesystem;
using namespace Platform;

namespace
{

/** Of FILE.1, FILE.2 and so on, in their order. */
std::vector<int> numbersOf(const fs::path& file)
{
    std::vector<int> numbers;
    std::error_code none;
    const auto prefix = file.filename().string() + ".";
    for (const auto& entry : fs::directory_iterator(file.has_parent_path() ? file.parent_path() : ".", none))
    {
        const auto name = entry.path().filename().string();
        constexpr std::size_t mostDigits = 5;
        const auto digits = name.starts_with(prefix) ? name.substr(prefix.size()) : "";
        if (!digits.empty() && digits.size() <= mostDigits &&
            digits.find_first_not_of("0123456789") == std::string::npos)
            numbers.push_back(std::stoi(digits));
    }
    std::ranges::sort(numbers);
    return numbers;
}

} // namespace

std::string RecordingFiles::load(const std::string& file)
{
    constexpr auto none = static_cast<std::size_t>(-1);
    gap = none;
    if (auto error = loadOne(file, 0); !error.empty())
        return error;
    if (std::ranges::none_of(records, [](const auto& record) { return record.step == Step::begin; }))
        return file + ": its beginning is missing";
    int expected = 1;
    for (const int number : numbersOf(file))
    {
        if (number != expected)
            noteGap("between file " + std::to_string(expected - 1) + " and file " + std::to_string(number) +
                    " the older files were removed to make room");
        const auto path = file + "." + std::to_string(number);
        if (const auto error = loadOne(path, number); !error.empty())
            noteGap(error);
        expected = number + 1;
    }
    if (gap == none && records.back().step != Step::end)
        note("the recording ends before the engine has ended: it was killed, or the rest was not written any more");
    gap = std::min(gap, records.size());
    return {};
}

std::string RecordingFiles::loadOne(const std::string& path, int expectedNumber)
{
    std::ifstream file(path, std::ios::binary);
    const std::string bytes { std::istreambuf_iterator(file), {} };
    if (!file.is_open())
        return path + ": " + std::strerror(errno);
    std::string error;
    const auto header = decodeHeader(bytes, error);
    if (!header)
        return path + ": " + error;
    if (header->number != expectedNumber || (expectedNumber > 0 && header->identity != identity))
        return path + ": it belongs to another recording, or stands at another place of it";
    identity = header->identity;
    RecordCutter cutter(std::string_view(bytes).substr(headerSize));
    while (auto record = cutter.next())
        take(std::move(*record));
    if (cutter.left() > 0)
        noteGap(path + ": it was cut or damaged, its last " + std::to_string(cutter.left()) + " bytes are lost");
    return {};
}

void RecordingFiles::take(Record record)
{
    FieldReader reader(record.fields);
    if (record.step == Step::thread)
    {
        const auto number = reader.number();
        constexpr std::int64_t mostThreads = 1'000'000;
        if (number < 1 || number > mostThreads)
            return;
        threads.resize(std::max(threads.size(), static_cast<std::size_t>(number)));
        threads[static_cast<std::size_t>(number) - 1] = printable(reader.bytes());
        return;
    }
    if (record.step == Step::begin)
    {
        engine = printable(reader.bytes());
        timeOfDay = reader.number();
    }
    if (record.step == Step::lost)
        noteGap(std::to_string(reader.number()) + " steps could not be written in time");
    records.push_back(std::move(record));
}

void RecordingFiles::noteGap(const std::string& what)
{
    gap = std::min(gap, records.size());
    note(what);
}

void RecordingFiles::note(const std::string& what)
{
    const auto seconds = records.empty() ? 0.0 : static_cast<double>(records.back().time) / 1e6;
    std::array<char, 32> at {};
    std::snprintf(at.data(), at.size(), "%.6f s: ", seconds);
    notes.push_back(at.data() + what);
}

const std::string& RecordingFiles::threadName(const Record& record) const
{
    static const std::string none;
    const auto index = static_cast<std::size_t>(record.thread) - 1;
    return index < threads.size() ? threads[index] : none;
}

} // namespace Replay
