// The user whose rights are looked at. The groups of this session and those of the account are kept apart: who was added to
// a group only has to log in anew, and needs another remedy than somebody who is not in it.
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

/// Why the user is refused access to a node, and so whether joining its group or logging in anew would help.
Refusal refusalOf(NodeAccess access, const struct stat &node, const User &user);

/// "crw-rw---- root dialout".
std::string rightsOf(const struct stat &node);

} // namespace host
