#pragma once

#include "diagnostics/Reports.h"

namespace Diagnostics
{

/** A sentence that a person understands, and the facts behind it. */
struct Explanation
{
    std::string sentence;
    std::vector<std::string> facts;

    Json toJson() const { return { { "sentence", sentence }, { "facts", facts } }; }
};

/**
    From the rules that the engine has really applied: the records of the last requests, and what every part says of
    itself. An observer's thread. Each throws Unknown for a name or a number that there is not.
*/
Explanation whyPage(int page);
Explanation whySource(int page);
Explanation whySilent();
Explanation whyRequest(std::uint32_t number);
/** Why it does not run, or that it does. */
Explanation whyProgram(int appType);

/** By the names of docs/interfaces.md. */
Explanation why(const std::string& subject, const std::string& name);

} // namespace Diagnostics
