#pragma once

#include <string>
#include <vector>

namespace Launch
{

/** Whose group may be launched, and who starts a program that names no user. */
inline constexpr const char* programGroup = "headunit";
inline constexpr const char* programUser = "headunit-program";

/**
    This process becomes the user's, for good: a member of the group, never the superuser. A process that is not the
    superuser's stays its own user's, and no other user is accepted then. Empty user = `programUser`, or its own. The
    environment gets its variables (HOME, USER, LOGNAME, SHELL) when it was changed. Empty on success,
    else why not; the process must not go on then.
*/
std::string become(const std::string& user, std::vector<std::string>& environment);

} // namespace Launch
