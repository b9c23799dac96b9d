#pragma once

#include "ctl/Client.h"
#include "ctl/Style.h"

#include <span>

namespace Ctl
{

/** Something that the engine tells of itself. */
struct Report
{
    const char* name;      ///< of the command
    const char* method;    ///< of the interface
    const char* parameter; ///< of the method, "NAME"; may be left out. Null when it has none
    const char* help;
    std::string (*text)(const Json& answer, const Style& style); ///< whole lines
};

std::span<const Report> reports();

/** The report as a person reads it. */
std::string textOf(const Report& report, const Json& answer, const Style& style);
/** What the answer leaves out, because somebody in the engine needs it at the moment; "" for nothing. */
std::string busyText(const Json& answer, const Style& style);

} // namespace Ctl
