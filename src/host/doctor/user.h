// The person whose rights are looked at.
#pragma once

#include "host/devices/node_access.h"

#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

namespace host {

struct User {
    std::string name; ///< the number when there is no account of it
    bool isRoot = false;
    std::vector<gid_t> session; ///< groups of this process
    std::vector<gid_t> account; ///< those that the next login will give
};

User currentUser();

enum class Refusal { None, NotInGroup, NotInSession, NoGroup };

/// Why a node's access is refused to the user, by its group.
Refusal refusalOf(NodeAccess access, const struct stat &node, const User &user);

/// "crw-rw---- root dialout".
std::string rightsOf(const struct stat &node);

} // namespace host
