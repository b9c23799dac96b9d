#include "launch/User.h"

#include <algorithm>
#include <cerrno>
#include <grp.h>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

namespace Launch
{

namespace
{

bool isMember(const passwd& user)
{
    const auto* group = getgrnam(programGroup);
    if (group == nullptr)
        return false;
    const auto wanted = group->gr_gid;
    int count = 0;
    getgrouplist(user.pw_name, user.pw_gid, nullptr, &count);
    std::vector<gid_t> groups(static_cast<std::size_t>(count));
    return getgrouplist(user.pw_name, user.pw_gid, groups.data(), &count) >= 0 &&
           std::ranges::find(groups, wanted) != groups.end();
}

/** Real, effective and saved ids, and the groups. */
bool change(const passwd& user)
{
    return initgroups(user.pw_name, user.pw_gid) == 0 && setresgid(user.pw_gid, user.pw_gid, user.pw_gid) == 0 &&
           setresuid(user.pw_uid, user.pw_uid, user.pw_uid) == 0 && getuid() == user.pw_uid &&
           geteuid() == user.pw_uid && getgid() == user.pw_gid && setuid(0) != 0;
}

void setVariable(std::vector<std::string>& environment, const std::string& name, const char* value)
{
    std::erase_if(environment, [&](const std::string& each) { return each.starts_with(name + "="); });
    environment.push_back(name + "=" + value);
}

} // namespace

std::string become(const std::string& name, std::vector<std::string>& environment)
{
    if (geteuid() != 0)
    {
        const auto* user = name.empty() ? getpwuid(geteuid()) : getpwnam(name.c_str());
        return name.empty() || (user != nullptr && user->pw_uid == geteuid())
                   ? ""
                   : "only the superuser can start a program of user " + name;
    }
    const auto wanted = name.empty() ? programUser : name;
    const auto* found = getpwnam(wanted.c_str());
    if (found == nullptr)
        return "there is no user " + wanted;
    // The other questions to the user database may use the same memory.
    const std::string userName = found->pw_name, home = found->pw_dir, shell = found->pw_shell;
    passwd user = *found;
    user.pw_name = const_cast<char*>(userName.c_str());
    if (user.pw_uid == 0 || (userName != programGroup && !isMember(user)))
        return "user " + wanted + " is not one of the group " + programGroup;
    if (!change(user))
        return "cannot become user " + wanted + ": " + std::generic_category().message(errno);
    setVariable(environment, "HOME", home.c_str());
    setVariable(environment, "USER", userName.c_str());
    setVariable(environment, "LOGNAME", userName.c_str());
    setVariable(environment, "SHELL", shell.c_str());
    return {};
}

} // namespace Launch
