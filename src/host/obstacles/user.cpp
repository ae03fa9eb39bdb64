#include "host/obstacles/user.h"

#include <algorithm>
#include <fmt/format.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace host {

namespace {

std::string userName(uid_t id) {
    const passwd *account = getpwuid(id);
    return account ? account->pw_name : fmt::format("{}", id);
}

std::vector<gid_t> groupsOfAccount(const std::string &name, gid_t primary) {
    int count = 0;
    getgrouplist(name.c_str(), primary, nullptr, &count);
    std::vector<gid_t> groups(static_cast<size_t>(std::max(count, 0)));
    if (getgrouplist(name.c_str(), primary, groups.data(), &count) < 0) return {primary};
    return groups;
}

bool holds(const std::vector<gid_t> &groups, gid_t group) {
    return std::find(groups.begin(), groups.end(), group) != groups.end();
}

} // namespace

User currentUser() {
    User user;
    user.isRoot = getuid() == 0;
    user.name = userName(getuid());
    user.session.resize(static_cast<size_t>(std::max(getgroups(0, nullptr), 0)));
    user.session.resize(
        static_cast<size_t>(std::max(getgroups(static_cast<int>(user.session.size()), user.session.data()), 0)));
    user.session.push_back(getgid());
    const passwd *account = getpwuid(getuid());
    user.account = account ? groupsOfAccount(user.name, account->pw_gid) : user.session;
    return user;
}

Refusal refusalOf(NodeAccess access, const struct stat &node, const User &user) {
    if (access != NodeAccess::NoPermission) return Refusal::None;
    // Refused in spite of the group: the file system or a container's rules keep it shut, and no group will open it.
    if (groupWithAccess(node).empty() || holds(user.session, node.st_gid)) return Refusal::NoGroup;
    return holds(user.account, node.st_gid) ? Refusal::NotInSession : Refusal::NotInGroup;
}

std::string rightsOf(const struct stat &node) {
    std::string text = S_ISCHR(node.st_mode) ? "c" : "-";
    for (int bit = 8; bit >= 0; --bit)
        text += (node.st_mode >> bit & 1) != 0 ? "xwr"[bit % 3] : '-';
    const group *owners = getgrgid(node.st_gid);
    return fmt::format("{} {} {}", text, userName(node.st_uid), owners ? owners->gr_name : fmt::format("{}", node.st_gid));
}

} // namespace host
