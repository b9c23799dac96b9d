#include "diagnostics/TraceFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Diagnostics
{

namespace
{

using Arguments = TraceFile::Arguments;

constexpr const char* head = R"({"displayTimeUnit":"ns","traceEvents":[)";
/** The end takes the place of the one before it, so that it finds room on a full disk too. */
constexpr std::size_t endLength = 512;

std::string dump(const Arguments& value)
{
    return value.dump(-1, ' ', false, Arguments::error_handler_t::replace);
}

std::string endWith(const Arguments& facts)
{
    return "\n]" + (facts.empty() ? std::string() : ",\"otherData\":" + dump(facts)) + "}\n";
}

std::string microseconds(std::chrono::nanoseconds time)
{
    constexpr std::int64_t thousand = 1000;
    const auto fraction = std::to_string(thousand + time.count() % thousand); // with a 1 in front of its zeros
    return std::to_string(time.count() / thousand) + "." + fraction.substr(1);
}

std::string systemError(const char* what)
{
    return std::string(what) + ": " + std::strerror(errno);
}

std::string whyUnfit(int descriptor)
{
    struct stat status = {};
    const int flags = ::fcntl(descriptor, F_GETFL);
    if (flags < 0 || ::fstat(descriptor, &status) != 0)
        return systemError("the trace's file cannot be used");
    if (!S_ISREG(status.st_mode))
        return "a trace is written into a regular file";
    if ((flags & O_ACCMODE) == O_RDONLY || (flags & O_APPEND) != 0)
        return "the trace's file is to be open for writing, not for appending";
    return "";
}

} // namespace

TraceFile::TraceFile(int descriptor, std::size_t limitOfSize)
    : file(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0))
    , limit(limitOfSize)
    , failure(whyUnfit(file.get()))
    , text(head)
{
    if (failure.empty() && ::ftruncate(file.get(), 0) != 0)
        failure = systemError("the trace's file cannot be emptied");
    if (!failure.empty())
        file.reset();
    flush();
}

int TraceFile::track(const std::string& groupName, const std::string& name)
{
    const auto [found, isNewGroup] = groups.try_emplace(groupName, Group { static_cast<int>(groups.size()) + 1, {} });
    auto& [process, tracks] = found->second;
    const auto [track, isNew] = tracks.try_emplace(name, static_cast<int>(processes.size()) + 1);
    if (isNewGroup)
        addName("process_name", process, track->second, groupName);
    if (isNew)
    {
        processes.push_back(process);
        addName("thread_name", process, track->second, name);
    }
    return track->second;
}

void TraceFile::addName(const char* kind, int process, int track, const std::string& name)
{
    const Arguments event {
        { "ph", "M" }, { "name", kind }, { "pid", process }, { "tid", track }, { "args", { { "name", name } } }
    };
    text += std::exchange(separator, ",\n") + dump(event);
}

void TraceFile::add(const Slice& slice)
{
    if (!failure.empty())
        return;
    // Put together by hand: a tree of JSON for each of them takes three times as long as all the rest.
    text += std::exchange(separator, ",\n");
    text += R"({"ph":"X","pid":)" + std::to_string(processes.at(static_cast<std::size_t>(slice.track) - 1));
    text += R"(,"tid":)" + std::to_string(slice.track);
    text += R"(,"ts":)" + microseconds(slice.at) + R"(,"dur":)" + microseconds(slice.duration);
    text += R"(,"name":)" + dump(slice.name);
    if (!slice.arguments.empty())
        text += R"(,"args":)" + dump(slice.arguments);
    if (slice.arrow != Arrow::none)
        text += R"(,"bind_id":)" + std::to_string(slice.arrowNumber) +
                (slice.arrow == Arrow::begins ? R"(,"flow_out":true)" : R"(,"flow_in":true)");
    text += '}';
}

void TraceFile::flush()
{
    if (!failure.empty() || text.empty())
        return;
    auto ended = text + endWith({});
    ended.resize(text.size() + endLength, ' ');
    if (size + ended.size() > limit)
        return fail("the trace has grown to its limit");
    if (!writeAt(size, ended))
        return fail(systemError("the trace cannot be written"));
    size += std::exchange(text, {}).size();
}

void TraceFile::fail(std::string why)
{
    failure = std::move(why);
    text.clear();
    end({ { "failure", failure } });
}

void TraceFile::finish(const Arguments& facts)
{
    flush();
    auto all = facts;
    if (!failure.empty())
        all["failure"] = failure;
    if (!end(all) && failure.empty())
        failure = systemError("the trace cannot be written");
}

bool TraceFile::end(const Arguments& facts)
{
    const auto bytes = endWith(facts);
    return size > 0 && writeAt(size, bytes) && ::ftruncate(file.get(), static_cast<off_t>(size + bytes.size())) == 0;
}

bool TraceFile::writeAt(std::size_t position, const std::string& bytes)
{
    for (std::size_t written = 0; written < bytes.size();)
    {
        const auto count = ::pwrite(file.get(), bytes.data() + written, bytes.size() - written,
                                    static_cast<off_t>(position + written));
        if (count > 0)
            written += static_cast<std::size_t>(count);
        else if (count == 0 || errno != EINTR)
            return false;
    }
    return true;
}

} // namespace Diagnostics
