#include "platform/base/Execution.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Platform
{

namespace
{

constexpr int firstForeignDescriptor = 3;

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers(texts.size() + 1); // The last stays null.
    std::ranges::transform(texts, pointers.begin(), [](std::string& text) { return text.data(); });
    return pointers;
}

void restoreSignals()
{
    for (int number = 1; number < NSIG; ++number)
        std::signal(number, SIG_DFL); // Fails for those that cannot be handled, which have no handler either.
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool dropPrivileges()
{
    constexpr rlimit noRealTime { 0, 0 };
    constexpr sched_param normal {};
    constexpr pid_t self = 0;
    return prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0) == 0 &&
           setrlimit(RLIMIT_RTPRIO, &noRealTime) == 0 && sched_setscheduler(self, SCHED_OTHER, &normal) == 0;
}

} // namespace

Execution::Execution(std::string path, std::vector<std::string> arguments, std::vector<std::string> environment,
                     Descriptor programContent)
    : executed(programContent ? "/proc/self/fd/" + std::to_string(programContent.get()) : path)
    , folder(programContent ? std::filesystem::path(path).parent_path().string() : "")
    , texts(std::move(arguments))
    , variables(std::move(environment))
    , content(std::move(programContent))
{
    texts.insert(texts.begin(), std::move(path));
    words = pointersTo(texts);
    settings = pointersTo(variables);
}

int Execution::run() const
{
    restoreSignals();
    if (!dropPrivileges() || (!folder.empty() && chdir(folder.c_str()) != 0))
        return errno;
    // Also what libraries have opened without the flag.
    close_range(firstForeignDescriptor, ~0U, CLOSE_RANGE_CLOEXEC);
    // The interpreter of a script opens it by this number.
    if (content && fcntl(content.get(), F_SETFD, 0) != 0)
        return errno;
    execve(executed.c_str(), words.data(), settings.data());
    return errno;
}

} // namespace Platform
