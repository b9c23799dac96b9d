#pragma once

#include "ctl/Fields.h"
#include "ctl/Style.h"

/** The answers that are lists, as tables: whole lines of text. */
namespace Ctl
{

std::string pagesText(const Json& answer, const Style& style);
std::string programsText(const Json& answer, const Style& style);
std::string requestsText(const Json& answer, const Style& style);
std::string settingsText(const Json& answer, const Style& style);
std::string groupsText(const Json& answer, const Style& style);
std::string queuesText(const Json& answer, const Style& style);
std::string countersText(const Json& answer, const Style& style);
std::string latencyText(const Json& answer, const Style& style);

/** Without the records whose `count` is 0. */
Json withoutZeros(const Json& answer);

} // namespace Ctl
