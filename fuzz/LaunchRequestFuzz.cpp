// What the launcher hears from whoever may connect, and the engine from the launcher.
#include "platform/base/LaunchRequest.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Platform::LaunchAnswer;
    using Platform::LaunchRequest;
    const std::string text(data, data + size);
    std::string problem;
    if (const auto request = LaunchRequest::parse(text, problem))
    {
        // What was accepted is a request that the engine could have made.
        const auto again = LaunchRequest::parse(request->toText(), problem);
        if (!again || again->toText() != request->toText() || (!request->ends && request->path.front() != '/'))
            std::abort();
    }
    else if (problem.empty())
        std::abort();
    const auto answer = LaunchAnswer::parse(text);
    if ((answer.pid > 0) + answer.ended + !answer.error.empty() != 1)
        std::abort();
    return 0;
}
