#pragma once

#include "ctl/Client.h"
#include "ctl/Style.h"

namespace Ctl
{

/**
    Lets the engine write a trace for so many seconds, or until it is interrupted. The file is there when it is complete;
    one of that name stays as long as nothing was written. What an engine that ended has written is kept, too.
*/
Answer takeTrace(Client& client, const std::string& file, std::uint32_t seconds,
                 const std::function<bool()>& isInterrupted);

constexpr std::uint32_t usualTraceSeconds = 10, longestTraceSeconds = 600;

/** What it has become, and how to look at it. */
std::string traceText(const Json& answer, const std::string& file, const Style& style);

} // namespace Ctl
