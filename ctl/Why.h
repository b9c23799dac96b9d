#pragma once

#include "ctl/Client.h"
#include "ctl/Style.h"

#include <span>

namespace Ctl
{

/** What the engine can be asked the reason of. */
struct Question
{
    const char* words;     ///< behind "why"
    const char* subject;   ///< of the interface
    const char* parameter; ///< "PAGE"; null when there is none
    const char* help;
};
std::span<const Question> questions();

Answer askWhy(Client& client, const Question& question, const std::string& parameter);
/** The sentence, and what it follows from. */
std::string whyText(const Json& answer, const Style& style);

/**
    The engine's name for a PAGE, PROGRAM or NAME of a setting, which may be in capitals or not, and without what all begin
    with: "fm" is mbFM. What the engine has no such thing for stays as it is.
*/
std::string fullName(Client& client, const std::string& parameter, const std::string& given);

} // namespace Ctl
