#include "host/devices/node_access.h"

#include <cerrno>
#include <grp.h>
#include <unistd.h>

namespace host {

NodeAccess accessTo(const std::string &node) {
    if (access(node.c_str(), R_OK | W_OK) == 0) return NodeAccess::Ok;
    return errno == EACCES || errno == EPERM || errno == EROFS ? NodeAccess::NoPermission : NodeAccess::NoNode;
}

const char *accessText(NodeAccess access) {
    constexpr const char *kTexts[] = {"ok", "no permission", "no node"};
    return kTexts[static_cast<int>(access)];
}

std::string groupWithAccess(const struct stat &node) {
    constexpr mode_t kBoth = S_IRGRP | S_IWGRP;
    if ((node.st_mode & kBoth) != kBoth || node.st_gid == 0) return {};
    const group *owner = getgrgid(node.st_gid);
    return owner ? owner->gr_name : "";
}

} // namespace host
