#include "platform/record/RecordWriter.h"

#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <pthread.h>
#include <random>

namespace Platform
{

namespace
{

namespace fs = std::filesystem;

constexpr Log logger { "platform/RecordWriter", "RecordWriter" };

/** The first file, which has the start, and the newest ones. */
constexpr int filesInRing = 8;
constexpr std::size_t mostBuffered = 4 * 1024 * 1024;
/** What comes together is written together. */
constexpr std::chrono::milliseconds writePause { 20 };
constexpr mode_t fileMode = 0600;
constexpr std::size_t pieceOfFile = 64 * 1024;
constexpr const char* oldSuffix = ".old";

std::string reasonOf(const std::string& path, int error)
{
    return path + ": " + std::strerror(error);
}

std::uint64_t newIdentity()
{
    constexpr unsigned half = 32;
    std::random_device source;
    return (static_cast<std::uint64_t>(source()) << half) | source();
}

/** FILE, FILE.1, FILE.2 and so on: what follows FILE in the names of a recording's files. */
std::vector<std::string> suffixesOf(const fs::path& file)
{
    std::vector<std::string> suffixes;
    std::error_code none;
    const auto folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    for (const auto& entry : fs::directory_iterator(folder, none))
    {
        const auto name = entry.path().filename().string();
        if (!name.starts_with(file.filename().string()))
            continue;
        const auto suffix = name.substr(file.filename().string().size());
        const bool isNumber = suffix.size() > 1 && suffix.front() == '.' &&
                              suffix.find_first_not_of("0123456789", 1) == std::string::npos;
        if (suffix.empty() || isNumber)
            suffixes.push_back(suffix);
    }
    return suffixes;
}

/** Empty on success: a recording of the same name is the old one now, and the one before that is gone. */
std::string keepOld(const std::string& file)
{
    std::error_code error;
    if (!fs::exists(file, error))
        return {};
    std::array<char, headerSize> header {};
    std::ifstream(file, std::ios::binary).read(header.data(), header.size());
    std::string wrong;
    const bool isRecording = decodeHeader({ header.data(), header.size() }, wrong).has_value();
    // An interrupted beginning leaves an empty one.
    if (!isRecording && fs::file_size(file, error) > 0)
        return file + " is there, and is " + wrong;
    const auto old = file + oldSuffix;
    for (const auto& suffix : suffixesOf(old))
        fs::remove(old + suffix, error);
    for (const auto& suffix : suffixesOf(file))
        if (fs::rename(file + suffix, old + suffix, error); error)
            return file + suffix + ": " + error.message();
    return {};
}

} // namespace

RecordWriter::RecordWriter(const Options& chosen)
    : Thread("Recorder")
    , options(chosen)
    , largestFile(std::max(chosen.limit, leastLimit) / filesInRing)
    , largestBuffer(std::min<std::size_t>(mostBuffered, largestFile / 2))
    , identity(newIdentity())
    , begin(Clock::now())
{
}

RecordWriter::~RecordWriter()
{
    {
        const std::lock_guard guard(lock);
        signalThreadShouldExit();
        filled.notify();
    }
    waitForThreadToExit(-1);
    flush();
}

std::unique_ptr<RecordWriter> RecordWriter::open(const Options& options, std::string& error)
{
    error = keepOld(options.file);
    if (!error.empty())
        return nullptr;
    std::unique_ptr<RecordWriter> writer(new RecordWriter(options));
    // The thread that starts the engine is the one that its messages run on.
    writer->threads.emplace_back("message");
    error = writer->beginFile();
    if (error.empty())
        error = writer->writeStart();
    if (!error.empty())
        return nullptr;
    if (!writer->startThread())
        error = "no thread for the recording";
    return error.empty() ? std::move(writer) : nullptr;
}

std::string RecordWriter::writeStart()
{
    const auto put = [this](Step step, const Fields& fields)
    {
        std::string bytes;
        encodeRecord(bytes, { step, 0, 0, fields.bytes() });
        return fileSize + bytes.size() > options.limit / 2
                   ? "what the start depends on is longer than half of the recording"
                   : write(bytes);
    };
    const juce::File configuration(juce::File::getCurrentWorkingDirectory().getChildFile(options.configuration));
    auto error = put(Step::begin, Fields(options.engine, timeOfDay().count()));
    if (error.empty())
        error = put(Step::configuration, Fields(configuration.getFullPathName(), configuration.loadFileAsString(),
                                                Configuration::get().osVersion));
    const auto putFile = [&](const char* folder, const fs::path& root, const fs::path& path)
    {
        std::ifstream source(path, std::ios::binary);
        std::string piece(pieceOfFile, '\0');
        for (std::int64_t offset = 0; error.empty() && (source.read(piece.data(), pieceOfFile), source.gcount() > 0);
             offset += source.gcount())
            error =
                put(Step::file, Fields(folder, fs::relative(path, root).string(), offset,
                                       std::string_view(piece).substr(0, static_cast<std::size_t>(source.gcount()))));
    };
    const fs::path system = AppConfig::getSystemFilePath().toStdString();
    std::error_code none;
    for (const auto& entry : fs::recursive_directory_iterator(system, none))
        // The lock of a store means its processes, which are others in a replay.
        if (error.empty() && entry.is_regular_file(none) && entry.path().filename() != "lock.mdb")
            putFile("system", system, entry.path());
    const fs::path application = AppConfig::getApplicationPath().toStdString();
    putFile("application", application, application / "Version.txt");
    return error;
}

std::string RecordWriter::pathOf(int number) const
{
    return options.file + (number == 0 ? "" : "." + std::to_string(number));
}

std::string RecordWriter::beginFile()
{
    ++fileNumber;
    // The first one stays.
    if (const int oldest = fileNumber - filesInRing + 1; oldest > 0)
        ::unlink(pathOf(oldest).c_str());
    const auto path = pathOf(fileNumber);
    file.reset(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, fileMode));
    fileSize = 0;
    if (!file)
        return reasonOf(path, errno);
    auto bytes = encodeHeader({ fileNumber, identity });
    const std::lock_guard guard(lock);
    for (std::size_t index = 0; index < threads.size(); ++index)
        encodeRecord(bytes, { Step::thread, 0, 0, Fields(index + 1, threads[index]).bytes() });
    return write(bytes);
}

std::string RecordWriter::write(std::string_view bytes)
{
    while (!bytes.empty())
    {
        const auto count = ::write(file.get(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return reasonOf(pathOf(fileNumber), errno);
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(0, count)));
        fileSize += static_cast<std::uint64_t>(std::max<ssize_t>(0, count));
    }
    return {};
}

void RecordWriter::run()
{
    while (!threadShouldExit())
    {
        {
            std::unique_lock guard(lock);
            writerSleeps = true;
            filled.wait(guard, [this] { return !buffer.empty() || threadShouldExit(); });
            writerSleeps = false;
        }
        sleepFor(writePause);
        flush();
    }
}

void RecordWriter::flush()
{
    const std::lock_guard writing(fileLock);
    std::string bytes;
    {
        const std::lock_guard guard(lock);
        bytes.swap(buffer);
        buffer.reserve(bytes.capacity());
    }
    std::string error;
    if (fileSize + bytes.size() > largestFile && fileSize > headerSize)
        error = beginFile();
    if (error.empty())
        error = write(bytes);
    if (error.empty())
        return;
    const std::lock_guard guard(lock);
    if (!std::exchange(finished, true))
        logger().error("the recording ends: %s", error.c_str());
}

int RecordWriter::threadNumber()
{
    thread_local std::pair<std::uint64_t, int> known {};
    auto& number = known.second;
    if (std::exchange(known.first, identity) == identity)
        return number;
    // That of the process is the main thread's, too.
    std::array<char, 16> ownName {};
    ::pthread_getname_np(::pthread_self(), ownName.data(), ownName.size());
    if (::getpid() == ::gettid())
        return number = 1;
    threads.emplace_back(ownName.data());
    number = static_cast<int>(threads.size());
    append(Step::thread, 0, Fields(number, threads.back()).bytes());
    return number;
}

void RecordWriter::append(Step step, int thread, const std::string& fields)
{
    if (finished)
        return;
    const auto time = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin).count();
    // The frame and the numbers of a record.
    constexpr std::size_t aroundFields = 40;
    if (buffer.size() + fields.size() + 2 * aroundFields > largestBuffer ||
        fields.size() + aroundFields > longestRecord)
    {
        ++lost;
        return;
    }
    if (lost > 0)
        encodeRecord(buffer, { Step::lost, 0, time, Fields(std::exchange(lost, 0)).bytes() });
    encodeRecord(buffer, { step, thread, time, fields });
    if (std::exchange(writerSleeps, false))
        filled.notify();
}

void RecordWriter::enter(Step step, const Fields& fields)
{
    lock.lock();
    append(step, threadNumber(), fields.bytes());
}

void RecordWriter::finish()
{
    const std::lock_guard guard(lock);
    append(Step::end, 0, {});
    finished = true;
}

} // namespace Platform
