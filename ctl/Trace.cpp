#include "ctl/Trace.h"

#include "ctl/Fields.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace Ctl
{

Answer takeTrace(Client& client, const std::string& file, std::uint32_t seconds,
                 const std::function<bool()>& isInterrupted)
{
    const auto part = file + ".part";
    const int descriptor = ::open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (descriptor < 0)
        return { Answer::failed, {}, part + ": " + std::strerror(errno) };
    auto answer = client.trace(descriptor, seconds, isInterrupted);
    ::close(descriptor);
    std::error_code error;
    if (std::filesystem::file_size(part, error) == 0)
        std::filesystem::remove(part, error);
    else if (std::filesystem::rename(part, file, error); error && answer.kind == Answer::done)
        return { Answer::failed, {}, file + ": " + error.message() + "; the trace is " + part };
    return answer;
}

std::string traceText(const Json& answer, const std::string& file, const Style& style)
{
    const Fields trace(answer);
    const auto lost = trace.number("lost").value_or(0);
    return style.bold(trace["events"] + " events") + " in " + trace.time("ms") + ", written to " + file +
           (lost > 0 ? style.warning("  " + trace["lost"] + " lost") : "") + "\n" +
           (trace.has("failure") ? style.warning("It ended early: " + trace["failure"]) + "\n" : "") +
           style.dim("Open it in the Perfetto viewer, https://ui.perfetto.dev") + "\n";
}

} // namespace Ctl
